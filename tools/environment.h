// The environment variables with which a program runs on a simulated device, or on this machine.
#pragma once

#include <string>

#include "run.h"
#include "run_folder.h"

namespace tools {

// A path of the device's library that can be preloaded: its own, or, if that contains a separator,
// a symbolic link in a fresh folder. Empty on failure.
std::string preloadableSimulator(RunFolder& folder);

// Sets this process's environment, which the program inherits and from which the device reads its
// set-up.
void setEnvironment(const RunRequest& request, const std::string& root,
                    const std::string& simulator);

// The path of the implementation for today's Linux, which is in the same folder. Empty, with the
// reason, when it cannot be preloaded.
std::string preloadableLinux(std::string* why);

// Preloads a library, before those that LD_PRELOAD has already.
void preload(const std::string& library);

std::string absolutePath(const std::string& path);

}  // namespace tools
