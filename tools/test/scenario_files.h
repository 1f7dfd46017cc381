// The list of scenarios to run.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tools {

struct TestCase {
    std::string scenario;  // its file
    std::string row;       // of its table; empty: it has none
    std::string program;   // whose scenario it is; empty: as the scenario says

    std::string name() const { return row.empty() ? scenario : scenario + "[" + row + "]"; }
};

// Each file that is named, whatever its name, and each *.scenario below a folder, or for a program
// below tests/ in the application's folder; each once, in the order of their names, and once for
// each row of its table. Nothing, with a line in `error`, when one cannot be found.
std::optional<std::vector<TestCase>> findScenarios(const std::vector<std::string>& paths,
                                                   std::string* error);

// Whether no step, and nothing after the end, can find anything out about the program.
bool expectsNothing(const TestCase& one);

}  // namespace tools
