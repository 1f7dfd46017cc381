// `tavsim ctl`: one command to a running device.
#ifndef TAV_TOOLS_CONTROL_CTL_H
#define TAV_TOOLS_CONTROL_CTL_H

#include <string>
#include <vector>

namespace tools {

struct ControlRequest {
    std::string root;     // of the device; empty: the only one that runs
    double timeout = 10;  // seconds that the application has to answer
    std::vector<std::string> command;
};

// Sends the command and prints its answer. The exit status: 0 when it was carried out, 1 when it
// was refused, 2 when no device was reached or it did not answer completely.
int control(const ControlRequest& request);

}  // namespace tools

#endif
