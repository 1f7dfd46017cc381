// Where the files of an application are.
#pragma once

#include <string>

namespace base {

// The absolute path of the running program's executable; empty when the kernel does not tell.
std::string executable();

// The path of what has this path from the executable's folder.
std::string besideExecutable(const std::string& path);

// The folder with an application's data: of an installed program PREFIX/bin/NAME or
// PREFIX/games/NAME, the folder PREFIX/share/NAME or PREFIX/share/games/NAME, if there is one. Of
// any other, the folder of its executable.
std::string applicationFolder(const std::string& executable);

}  // namespace base
