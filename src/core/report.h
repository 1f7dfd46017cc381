// The one way to report a failure.
#pragma once

#include "SDL.h"
#include "platform/htracker.h"

// Sets SDL's error string to the message, a format with its arguments, writes it into the trace,
// and evaluates to the code, so that a function can end with `return TAV_FAIL(__func__, CODE,
// "…")`. For a function that returns a pointer, the code is nullptr. A macro, because the compiler
// does not check a format that is passed through a template. Evaluates the arguments twice.
#define TAV_FAIL(function, code, ...) \
    (SDL_SetError(__VA_ARGS__), HTracker_funcTrack("tav_e", function, __VA_ARGS__), code)

namespace tav {

// The message for exhausted memory, where no other message is prescribed.
inline constexpr char kOutOfMemory[] = "Could not allocate memory";

}  // namespace tav
