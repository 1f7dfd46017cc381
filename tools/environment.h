// The environment that puts a program on a simulated device.
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

std::string absolutePath(const std::string& path);

}  // namespace tools

#endif
