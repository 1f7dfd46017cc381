// The one way to report a failure.
#ifndef TAV_CORE_REPORT_H
#define TAV_CORE_REPORT_H

#include <cstddef>

#include "SDL.h"
#include "platform/htracker.h"

namespace tav {

// The message where memory is exhausted and nothing else is to be said.
inline constexpr char kOutOfMemory[] = "Could not allocate memory";

// Leaves the message as SDL's error string and in the trace, and hands the code back, so that a
// function can end with `return fail(__func__, …)`.
template <typename... Arguments>
int fail(const char* function, int code, const char* format, Arguments... arguments) {
    SDL_SetError(format, arguments...);
    HTracker_funcTrack("tav_e", function, format, arguments...);
    return code;
}

// The same for functions that return pointers.
template <typename... Arguments>
std::nullptr_t failNull(const char* function, const char* format, Arguments... arguments) {
    fail(function, 0, format, arguments...);
    return nullptr;
}

}  // namespace tav

#endif
