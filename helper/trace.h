// Access to the library's trace.
#pragma once

#include <string>
#include <vector>

namespace helper {

// Keeps the lines of these tags in memory: names separated by commas, or "all". Empty stops it.
void keepTrace(const std::string& tags);

// The lines that were kept since the last call.
std::vector<std::string> takeTraceLines();

// Defined by each implementation of platform/. Called when the trace, or a part of it, cannot be
// written. If it returns, the program goes on without that part.
void traceCannotBeHad(const std::string& problem);

}  // namespace helper
