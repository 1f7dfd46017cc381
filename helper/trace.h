// Who listens to the library's traces.
#ifndef TAV_HELPER_TRACE_H
#define TAV_HELPER_TRACE_H

#include <string>
#include <vector>

namespace helper {

// Keeps the lines of these tags in memory: names with commas between, or "all"; empty stops.
void keepTrace(const std::string& tags);

// The lines kept since the last look.
std::vector<std::string> takeTraceLines();

// Defined by each implementation of platform/: what becomes of a program whose trace, or a part of
// it, cannot be had. When it returns, that is left out.
void traceCannotBeHad(const std::string& problem);

}  // namespace helper

#endif
