// The environment that puts a program on a simulated device, or on this machine.
#ifndef TAV_TOOLS_ENVIRONMENT_H
#define TAV_TOOLS_ENVIRONMENT_H

#include <string>

#include "run.h"
#include "run_folder.h"

namespace tools {

// The library that implements the device, by a path that can be preloaded: its own, or a link to it
// in a fresh folder where that one holds what separates the names to preload. Empty when there is
// none.
std::string preloadableSimulator(RunFolder& folder);

// Sets this process's environment, which the program inherits: the device reads its set-up there.
void setEnvironment(const RunRequest& request, const std::string& root,
                    const std::string& simulator);

// The library that stands for today's Linux, which is beside the other. Empty, with the reason,
// when it cannot be preloaded.
std::string preloadableLinux(std::string* why);

// Puts a library in front of those that the program has.
void preload(const std::string& library);

std::string absolutePath(const std::string& path);

}  // namespace tools

#endif
