// `tavsim ctl`: one command to a running device.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tools {

inline constexpr int kNotReached = 2;

struct ControlRequest {
    std::string root;     // of the device; empty: the only one that runs
    double timeout = 10;  // seconds that the application has to answer
    std::vector<std::string> command;
};

// Sends the command and prints its answer. The exit status: 0 when it was carried out, 1 when it
// was refused, 2 when no device was reached or it did not answer completely.
int control(const ControlRequest& request);

// `tavsim ctl wait`, with the text after the command's name. The exit status: 0 when the condition
// was met, 1 when it was not met in time or cannot be met any more, 2 when it is malformed or no
// device was reached.
int waitFor(const ControlRequest& request, std::string_view words);

}  // namespace tools
