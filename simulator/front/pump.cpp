#include "simulator/front/pump.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/control/control.h"
#include "simulator/device/clock.h"
#include "simulator/device/queue.h"
#include "simulator/device/running.h"

namespace tavsim {
namespace {

constexpr Uint32 kWaitStep = 10;  // milliseconds between two looks at SDL's queue

// Lets time pass until the next delivery or SDL event may be there.
void waitABit() {
    const std::optional<Milliseconds> due = nextDue();
    if (isTimeVirtual() && due) {
        setTime(*due);
        return;
    }
    static const auto realDelay = front::nextFunction<void(Uint32)>("SDL_Delay");
    realDelay(kWaitStep);
}

}  // namespace

void pumpNow() {
    if (isWanted()) {
        serveControl();
        deliverDue();
    }
}

void pumpUntil(Milliseconds time) {
    pumpNow();
    for (auto due = nextDue(); due && *due <= time; due = nextDue()) {
        setTime(*due);
        pumpNow();
    }
    setTime(time);
}

}  // namespace tavsim

extern "C" {

TAV_PLATFORM_API void SDL_PumpEvents(void) {
    static const auto real = front::nextFunction<void()>("SDL_PumpEvents");
    tavsim::pumpNow();
    real();
}

TAV_PLATFORM_API int SDL_PollEvent(SDL_Event* event) {
    static const auto real = front::nextFunction<int(SDL_Event*)>("SDL_PollEvent");
    tavsim::pumpNow();
    return real(event);
}

TAV_PLATFORM_API int SDL_WaitEvent(SDL_Event* event) {
    while (true) {
        SDL_PumpEvents();
        const int found = SDL_PeepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
        if (found != 0) {
            return found > 0 ? 1 : 0;  // without a queue there is nothing to wait for
        }
        tavsim::waitABit();
    }
}
}
