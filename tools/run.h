// `tavsim run`: a program on a simulated device, or on this machine.
#pragma once

#include <string>
#include <vector>

namespace tools {

struct PanelOptions {
    std::string tiles;  // address of a tile server for the map; empty: none
    int port = 0;       // 0: any
};

struct RunRequest {
    // Name of a profile that comes with the simulator, or a file. Empty: as the scenario says, or
    // the application's own, or the usual one.
    std::string device;
    std::string root;  // empty: a fresh folder, removed afterwards
    std::string page;
    std::string journal;
    std::string record;    // file for what happens to the device from outside, as a scenario
    std::string scenario;  // file of what happens to the device, and what is expected
    std::string row;       // of the scenario's table
    bool updatePictures = false;
    std::string differences;  // folder for pictures of differences; empty: beside the stored ones
    bool panel = false;       // the device is shown in a browser
    PanelOptions panelOptions;
    bool plugin = false;
    bool virtualTime = false;
    double timeout = 0;                // seconds; 0: none, or as the scenario says
    bool real = false;                 // not on a simulated device: none of the others applies
    std::vector<std::string> command;  // empty: as the scenario says
};

// The exit status for the shell: the program's own, 128 + n when signal n ended it, 124 after the
// time-out, 127 when it cannot be started, 2 when the device cannot be set up. With a scenario: 0
// when every expectation was met, which may include the program's own status; 2 also when the
// scenario is malformed; 3 when an expectation was not met.
int run(RunRequest request);

}  // namespace tools
