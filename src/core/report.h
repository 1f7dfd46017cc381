// The one way to report a failure.
#ifndef TAV_CORE_REPORT_H
#define TAV_CORE_REPORT_H

#include "SDL.h"
#include "platform/htracker.h"

// Leaves the message, a format with its arguments, as SDL's error string and in the trace, and
// hands the code back, so that a function can end with `return TAV_FAIL(__func__, CODE, "…")`;
// functions that return pointers hand back nullptr. A macro, so that the compiler checks the
// format, which it cannot see through a template. Evaluates the arguments twice.
#define TAV_FAIL(function, code, ...) \
    (SDL_SetError(__VA_ARGS__), HTracker_funcTrack("tav_e", function, __VA_ARGS__), code)

namespace tav {

// The message where memory is exhausted and nothing else is to be said.
inline constexpr char kOutOfMemory[] = "Could not allocate memory";

}  // namespace tav

#endif
