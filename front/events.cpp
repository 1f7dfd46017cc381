#include "front/events.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"

namespace front {
namespace {

const void* objectOf(const char* function) {
    Dl_info found = {};
    void* address = dlsym(RTLD_NEXT, function);
    return address != nullptr && dladdr(address, &found) != 0 ? found.dli_fbase : nullptr;
}

bool isServed() {
    return takesPart() && isSdl12();
}

// 1 with an event, 0 without, below 0 where there is no queue.
int nextEvent(SDL_Event* event) {
    static const auto pumpEvents = nextFunction<void()>("SDL_PumpEvents");
    pumpEvents();
    return SDL_PeepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
}

}  // namespace

bool isSdl12() {
    // Version 2 lacks the function by which a window was named.
    static const bool is = objectOf("SDL_PollEvent") == objectOf("SDL_WM_SetCaption");
    return is;
}

}  // namespace front

extern "C" {

TAV_PLATFORM_API void SDL_PumpEvents(void) {
    static const auto real = front::nextFunction<void()>("SDL_PumpEvents");
    if (front::isServed()) {
        front::deliver();
    }
    real();
}

TAV_PLATFORM_API int SDL_PollEvent(SDL_Event* event) {
    static const auto real = front::nextFunction<int(SDL_Event*)>("SDL_PollEvent");
    if (!front::isServed()) {
        return real(event);
    }
    front::deliver();
    return front::nextEvent(event) > 0 ? 1 : 0;
}

TAV_PLATFORM_API int SDL_WaitEvent(SDL_Event* event) {
    static const auto real = front::nextFunction<int(SDL_Event*)>("SDL_WaitEvent");
    if (!front::isServed()) {
        return real(event);
    }
    while (true) {
        front::deliver();
        const int found = front::nextEvent(event);
        if (found != 0) {
            return found > 0 ? 1 : 0;  // without a queue there is nothing to wait for
        }
        front::waitForNext();
    }
}
}
