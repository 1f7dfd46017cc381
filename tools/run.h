// `tavsim run`: a program on a simulated device.
#ifndef TAV_TOOLS_RUN_H
#define TAV_TOOLS_RUN_H

#include <string>
#include <vector>

namespace tools {

struct RunRequest {
    std::string device = "cinnabar";  // name of a profile that comes with the simulator, or a file
    std::string root;                 // empty: a fresh folder, removed afterwards
    std::string page;
    std::string journal;
    bool plugin = false;
    bool virtualTime = false;
    double timeout = 0;  // seconds; 0: none
    std::vector<std::string> command;
};

// The exit status for the shell: the program's own, 128 + n after a death by signal n, 124 after
// the time-out, 127 when it cannot be started, 2 when the device cannot be had.
int run(const RunRequest& request);

}  // namespace tools

#endif
