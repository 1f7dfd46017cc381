// What the panel was started with.
#pragma once

#include <string>
#include <vector>

namespace panel {

struct Options {
    int port = 0;                      // 0: any
    std::string tiles;                 // a tile server's address for the map; may be empty
    std::string run;                   // root folder of a run's device; empty: all devices
    std::string header;                // of that run's recording
    std::vector<std::string> command;  // of `tavsim run`, for that run's device and program
};

}  // namespace panel
