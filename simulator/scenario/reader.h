// Reads scenarios from their files.
#ifndef TAV_SIMULATOR_SCENARIO_READER_H
#define TAV_SIMULATOR_SCENARIO_READER_H

#include <optional>
#include <string>

#include "platform/visibility.h"
#include "simulator/scenario/scenario.h"

namespace tavsim {

// Reads the file and those that it includes. When one cannot be read or is malformed, returns
// nothing, and `error` is a line about the first problem that begins with FILE:LINE or FILE.
TAV_PLATFORM_API std::optional<Scenario> readScenario(const std::string& file, std::string* error);

}  // namespace tavsim

#endif
