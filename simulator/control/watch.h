// What those are shown who watch a device.
#pragma once

#include <functional>
#include <string>

#include "simulator/control/commands.h"

namespace tavsim {

// Gives everything that there is, and then each time what has come since: JSON objects with one
// member each. It is "journal", an entry; "state", what differs of `state --json`; "recorded", a
// line; or "step", of the scenario.
std::function<News()> watchDevice();

// The rooms above tell what they do. It is kept for those who begin to watch later.
void tellRecorded(const std::string& line);

// The state is "waiting", "done" or "failed", for which there is a reason.
void tellStep(int line, const std::string& text, const char* state, const std::string& reason);

void forgetWhatWasTold();

}  // namespace tavsim
