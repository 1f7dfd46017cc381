// `tavsim run --real`: a program on the services of this machine.
#ifndef TAV_TOOLS_REAL_H
#define TAV_TOOLS_REAL_H

#include <string>
#include <vector>

namespace tools {

// Replaces this process by the program. Returns only on failure, with an exit status: 127 when the
// program cannot be started, 2 when nothing can be preloaded into it.
int runOnThisMachine(const std::vector<std::string>& command);

}  // namespace tools

#endif
