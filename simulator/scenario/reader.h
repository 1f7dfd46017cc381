// Reads scenarios from their files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/visibility.h"
#include "simulator/scenario/scenario.h"

namespace tavsim {

// Reads the file and those that it includes, with the values of that row of its table. When one
// cannot be read or is malformed, returns nothing, and `error` is a line about the first problem
// that begins with FILE:LINE or FILE. Without a row, only the names of a table's rows are read.
TAV_PLATFORM_API std::optional<Scenario> readScenario(const std::string& file,
                                                      const std::string& row, std::string* error);

// Whether one of its statements can fail because of what the application does.
TAV_PLATFORM_API bool expectsSomething(const Scenario& scenario);

// What to do where a row has to be chosen.
TAV_PLATFORM_API std::string whyNoRow(const std::string& file, const Scenario& scenario);

// A line of a scenario, one of its statements.
struct Line {
    std::string_view text;  // without blanks around it
    std::string place;      // FILE:LINE
    std::string folder;     // of the file
};

// Where relative paths start.
std::string inFolder(const std::string& folder, std::string_view file);

// Whether the line belongs to the header. If so, reads it; `error` says what is wrong with it.
bool readHeader(const Line& line, Scenario* scenario, std::string* error);

// Reads any other line, except for `include`, `table` and the lines of blocks.
void readStep(const Line& line, Scenario* scenario, std::string* error);

// Whether the last line that was read begins a block, whose lines follow until `end`.
bool beginsBlock(const Scenario& scenario);

// Reads a line of the block that the last step begins.
void readBlockLine(const Line& line, Scenario* scenario, std::string* error);

}  // namespace tavsim
