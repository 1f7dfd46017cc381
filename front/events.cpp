#include "front/events.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"

namespace front {
namespace {

int findPoll(SDL_Event* event);

// SDL's own, and what a poll is here. Looking whether they have been found already, or whether
// there is a device, would show in a poll that takes a few nanoseconds.
template <typename Function>
using Pointer = std::atomic<Function*>;
constinit Pointer<decltype(SDL_PumpEvents)> g_pump = nullptr;
constinit Pointer<decltype(SDL_PeepEvents)> g_peep = nullptr;
constinit Pointer<decltype(SDL_PollEvent)> g_poll = findPoll;

// What SDL 1.2's own does, but for coming to SDL_PumpEvents in front of it once more.
int pollSdl12(SDL_Event* event) {
    g_pump.load(std::memory_order_relaxed)();
    const auto peep = g_peep.load(std::memory_order_relaxed);
    return peep(event, 1, SDL_GETEVENT, SDL_ALLEVENTS) > 0 ? 1 : 0;
}

// 1 with an event, 0 without, below 0 where there is no queue.
int nextEvent(SDL_Event* event) {
    static const auto pumpEvents = TAV_FRONT_NEXT(SDL_PumpEvents);
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    pumpEvents();
    return peepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
}

int deliverAndTakeNext(SDL_Event* event) {
    deliver();
    const int found = nextEvent(event);
    if (found > 0 && event != nullptr) {
        taken(*event);
    }
    return found;
}

bool isServed() {
    return g_isAwake && takesPart() && isSdl12();
}

int pollAwake(SDL_Event* event) {
    static const auto real = TAV_FRONT_NEXT(SDL_PollEvent);
    return isServed() ? (deliverAndTakeNext(event) > 0 ? 1 : 0) : real(event);
}

int findPoll(SDL_Event* event) {
    g_pump = TAV_FRONT_NEXT(SDL_PumpEvents);
    g_peep = TAV_FRONT_NEXT(SDL_PeepEvents);
    auto* const asleep = isSdl12() ? pollSdl12 : TAV_FRONT_NEXT(SDL_PollEvent);
    auto* expected = findPoll;  // unless it woke up meanwhile
    g_poll.compare_exchange_strong(expected, g_isAwake ? pollAwake : asleep);
    return g_poll.load()(event);
}

}  // namespace

void wake() {
    g_isAwake = true;
    g_poll = pollAwake;
}

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
    return front::g_poll.load(std::memory_order_acquire)(event);
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
}
