// `tavsim run`: a program on a simulated device, or on this machine.
#ifndef TAV_TOOLS_RUN_H
#define TAV_TOOLS_RUN_H

#include <string>
#include <vector>

namespace tools {

struct RunRequest {
    // Name of a profile that comes with the simulator, or a file. Empty: as the scenario says, or
    // the usual one.
    std::string device;
    std::string root;  // empty: a fresh folder, removed afterwards
    std::string page;
    std::string journal;
    std::string record;    // file for what happens to the device from outside, as a scenario
    std::string scenario;  // file of what happens to the device, and what is expected
    bool plugin = false;
    bool virtualTime = false;
    double timeout = 0;                // seconds; 0: none, or as the scenario says
    bool real = false;                 // not on a simulated device: none of the others applies
    std::vector<std::string> command;  // empty: as the scenario says
};

// The exit status for the shell: the program's own, 128 + n after a death by signal n, 124 after
// the time-out, 127 when it cannot be started, 2 when the device cannot be had. With a scenario the
// program's own counts only as what is expected: 0 when all was as it should be, 2 also when the
// scenario is malformed, 3 when something was not as it should be.
int run(RunRequest request);

}  // namespace tools

#endif
