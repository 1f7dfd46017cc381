// Messages about steps.
#pragma once

#include <string>

#include "simulator/scenario/scenario.h"

namespace tavsim {

// FILE:LINE and the step's text.
std::string nameOf(const Step& step);

// Tells those who watch: "waiting", "done" or, with a reason, "failed".
void tellProgress(const Step& step, const char* state, const std::string& reason = {});

// The actual state, for the message about an expected one.
std::string whatIsThere(const std::string& state);

// Prints the failure on standard error, with the end of the journal, and first what is there of the
// pattern's what or uri.
void tellFailure(const Step& step, const std::string& reason, const Pattern* pattern = nullptr);

}  // namespace tavsim
