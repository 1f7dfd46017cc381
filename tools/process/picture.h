// Where a program draws.
#pragma once

#include <string>

namespace tools {

// Lets the program draw nowhere, unless the user chose, when its picture is shown by the page: then
// it needs no window. Changes this process's environment, which the program inherits.
void drawInPage(const std::string& page);

}  // namespace tools
