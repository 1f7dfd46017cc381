// Reads the statements of a scenario, one per line.
#ifndef TAV_SIMULATOR_SCENARIO_STATEMENTS_H
#define TAV_SIMULATOR_SCENARIO_STATEMENTS_H

#include <string>
#include <string_view>

#include "simulator/scenario/scenario.h"

namespace tavsim {

struct Line {
    std::string_view text;  // without blanks around it
    std::string place;      // FILE:LINE
    std::string folder;     // of the file
};

// Where relative paths start.
std::string inFolder(const std::string& folder, std::string_view file);

// Whether the line belongs to the header. If so, reads it; `error` says what is wrong with it.
bool readHeader(const Line& line, Scenario* scenario, std::string* error);

// Reads any other line, except for `include`.
void readStep(const Line& line, Scenario* scenario, std::string* error);

}  // namespace tavsim

#endif
