// The commands that steer a running device.
#ifndef TAV_SIMULATOR_CONTROL_COMMANDS_H
#define TAV_SIMULATOR_CONTROL_COMMANDS_H

#include <string>

namespace tavsim {

struct CommandResult {
    std::string error;    // empty: it was carried out
    std::string output;   // lines, each with its line feed
    bool follow = false;  // the journal's further lines are wanted too
};

// Carries one command line out. One that is unknown or malformed changes nothing.
CommandResult carryOut(const std::string& line);

}  // namespace tavsim

#endif
