// What a user is told of a step.
#ifndef TAV_SIMULATOR_SCENARIO_FAILURE_H
#define TAV_SIMULATOR_SCENARIO_FAILURE_H

#include <string>

#include "simulator/scenario/scenario.h"

namespace tavsim {

// FILE:LINE and the step's text.
std::string nameOf(const Step& step);

// In place of the state that was expected.
std::string whatIsThere(const std::string& state);

// On standard error, with the journal's end.
void tellFailure(const Step& step, const std::string& reason);

}  // namespace tavsim

#endif
