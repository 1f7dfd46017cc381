// SDL's event functions, in which this system delivers.
#include "SDL.h"
#include "front/next.h"
#include "linux/bus/pump.h"
#include "platform/visibility.h"

namespace {

constexpr Uint32 kWaitStep = 10;  // milliseconds between two looks, as SDL itself takes them

}  // namespace

extern "C" {

TAV_PLATFORM_API void SDL_PumpEvents(void) {
    static const auto real = front::nextFunction<void()>("SDL_PumpEvents");
    tavlinux::pump();
    real();
}

TAV_PLATFORM_API int SDL_PollEvent(SDL_Event* event) {
    static const auto real = front::nextFunction<int(SDL_Event*)>("SDL_PollEvent");
    tavlinux::pump();
    return real(event);
}

TAV_PLATFORM_API int SDL_WaitEvent(SDL_Event* event) {
    while (true) {
        SDL_PumpEvents();
        const int found = SDL_PeepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
        if (found != 0) {
            return found > 0 ? 1 : 0;  // without a queue there is nothing to wait for
        }
        SDL_Delay(kWaitStep);
    }
}
}
