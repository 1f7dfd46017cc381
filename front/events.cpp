#include "front/events.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"

namespace front {

constinit std::atomic<bool> g_areFramesWatched = false;

namespace {

// 1 with an event, 0 without, negative when SDL has no event queue.
int nextEvent(SDL_Event* event) {
    static const auto pumpEvents = TAV_FRONT_NEXT(SDL_PumpEvents);
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    pumpEvents();
    return peepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
}

int deliverAndTakeNext(SDL_Event* event) {
    deliver();
    const int found = nextEvent(event);
    if (found == 0 || (found > 0 && event != nullptr)) {
        looked(found > 0 ? event : nullptr);
    }
    return found;
}

bool isServed() {
    return g_isAwake && takesPart() && isSdl12();
}

}  // namespace
}  // namespace front

extern "C" {

TAV_PLATFORM_API void SDL_PumpEvents(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_PumpEvents);
    if (front::isServed()) {
        front::deliver();
    }
    real();
}

TAV_PLATFORM_API int SDL_PollEvent(SDL_Event* event) {
    static const auto real = TAV_FRONT_NEXT(SDL_PollEvent);
    return front::isServed() ? (front::deliverAndTakeNext(event) > 0 ? 1 : 0) : real(event);
}

TAV_PLATFORM_API int SDL_WaitEvent(SDL_Event* event) {
    static const auto real = TAV_FRONT_NEXT(SDL_WaitEvent);
    if (!front::isServed()) {
        return real(event);
    }
    while (true) {
        const int found = front::deliverAndTakeNext(event);
        if (found != 0) {
            return found > 0 ? 1 : 0;  // without a queue there is nothing to wait for
        }
        front::waitForNext();
    }
}

TAV_PLATFORM_API void SDL_Delay(Uint32 milliseconds) {
    static const auto real = TAV_FRONT_NEXT(SDL_Delay);
    front::delay(milliseconds, real);
}

TAV_PLATFORM_API void SDL_GL_SwapBuffers(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_GL_SwapBuffers);
    if (front::g_areFramesWatched.load(std::memory_order_relaxed)) {
        front::keepFrame();
    }
    real();
}
}
