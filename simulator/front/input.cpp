// Interposes SDL_GetAppState, so that it knows that the window was put away, and SDL_PushEvent,
// because an event that the application sends to itself is not input.
#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/device/running.h"
#include "simulator/input/origin.h"
#include "simulator/input/window.h"

extern "C" {

// SDL itself calls this for events of its window and of signals, and later versions with events of
// another layout.
TAV_PLATFORM_API int SDL_PushEvent(SDL_Event* event) {
    static const auto real = TAV_FRONT_NEXT(SDL_PushEvent);
    const bool isOwn = event != nullptr && tavsim::areOriginsTracked() && front::isSdl12() &&
                       front::objectOf(__builtin_return_address(0)) !=
                           front::objectOf(reinterpret_cast<const void*>(real));
    if (isOwn) {
        tavsim::noteOwnEvent(*event);
    }
    return real(event);
}

TAV_PLATFORM_API Uint8 SDL_GetAppState(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_GetAppState);
    return tavsim::isStarted() && front::isSdl12() ? tavsim::appState(real()) : real();
}
}
