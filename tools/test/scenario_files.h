// The list of scenarios to run.
#ifndef TAV_TOOLS_TEST_SCENARIO_FILES_H
#define TAV_TOOLS_TEST_SCENARIO_FILES_H

#include <optional>
#include <string>
#include <vector>

namespace tools {

// Each file that is named, whatever its name, and each *.scenario below a folder; each once, in the
// order of their names. Nothing, with a line in `error`, when one cannot be found.
std::optional<std::vector<std::string>> findScenarios(const std::vector<std::string>& paths,
                                                      std::string* error);

}  // namespace tools

#endif
