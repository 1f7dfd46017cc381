// `tavsim ctl`: one command to a running device.
#ifndef TAV_TOOLS_CTL_H
#define TAV_TOOLS_CTL_H

#include <string>
#include <vector>

namespace tools {

// Sends the command to the device with this root folder, or to the only one that runs on a fresh
// root when that is empty, and prints its answer. The exit status: 0 when it was carried out, 1
// when the device says why not, 2 when no device can be reached.
int control(const std::string& root, const std::vector<std::string>& command);

}  // namespace tools

#endif
