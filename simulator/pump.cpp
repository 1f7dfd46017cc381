#include "simulator/pump.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "SDL.h"
#include "platform/visibility.h"
#include "simulator/clock.h"
#include "simulator/control.h"
#include "simulator/next.h"
#include "simulator/running.h"

namespace sim {
namespace {

constexpr Uint32 kWaitStep = 10;  // milliseconds between two looks at SDL's queue

constexpr char kNotInFront[] =
    "tavsim: this program was linked with SDL in front of the simulated device, so it will receive "
    "no replies, readings or calls. Run it with `tavsim run`, or link with the output of "
    "`pkg-config --libs tav` before SDL.\n";

struct Delivery {
    long due;
    unsigned long order;
    std::function<void()> deliver;
};

bool isLater(const Delivery& left, const Delivery& right) {
    return std::pair(left.due, left.order) > std::pair(right.due, right.order);
}

// A heap, the next one in front. Never destroyed: the device ends after static objects do, and
// empties it then.
std::vector<Delivery>& queue() {
    static auto& instance = *new std::vector<Delivery>;
    return instance;
}

unsigned long g_nextOrder = 0;

Delivery takeFirst() {
    std::pop_heap(queue().begin(), queue().end(), isLater);
    Delivery first = std::move(queue().back());
    queue().pop_back();
    return first;
}

// Lets time pass until the next delivery or SDL event may be there.
void waitABit() {
    if (isTimeVirtual() && !queue().empty()) {
        setTime(queue().front().due);
        return;
    }
    static const auto realDelay = nextFunction<void(Uint32)>("SDL_Delay");
    realDelay(kWaitStep);
}

}  // namespace

void schedule(long due, std::function<void()> deliver) {
    queue().push_back({due, g_nextOrder++, std::move(deliver)});
    std::push_heap(queue().begin(), queue().end(), isLater);
}

void pumpNow() {
    if (!isWanted()) {
        return;
    }
    serveControl();
    const long time = now();
    const unsigned long newcomers = g_nextOrder;
    while (!queue().empty()) {
        const Delivery& first = queue().front();
        const bool isDue = first.due < time || (first.due == time && first.order < newcomers);
        if (!isDue) {
            return;
        }
        takeFirst().deliver();
    }
}

void pumpUntil(long time) {
    pumpNow();
    while (!queue().empty() && queue().front().due <= time) {
        setTime(queue().front().due);
        pumpNow();
    }
    setTime(time);
}

void clearQueue() {
    queue().clear();
}

void warnIfNotInFront() {
    static bool looked = false;
    if (std::exchange(looked, true)) {
        return;
    }
    Dl_info inUse;
    Dl_info own;
    void* pollEvent = dlsym(RTLD_DEFAULT, "SDL_PollEvent");
    if (pollEvent == nullptr || dladdr(pollEvent, &inUse) == 0 ||
        dladdr(reinterpret_cast<void*>(&clearQueue), &own) == 0) {
        return;
    }
    if (inUse.dli_fbase != own.dli_fbase) {
        std::fputs(kNotInFront, stderr);
    }
}

}  // namespace sim

extern "C" {

TAV_PLATFORM_API void SDL_PumpEvents(void) {
    static const auto real = sim::nextFunction<void()>("SDL_PumpEvents");
    sim::pumpNow();
    real();
}

TAV_PLATFORM_API int SDL_PollEvent(SDL_Event* event) {
    static const auto real = sim::nextFunction<int(SDL_Event*)>("SDL_PollEvent");
    sim::pumpNow();
    return real(event);
}

TAV_PLATFORM_API int SDL_WaitEvent(SDL_Event* event) {
    while (true) {
        SDL_PumpEvents();
        const int found = SDL_PeepEvents(event, 1, SDL_GETEVENT, SDL_ALLEVENTS);
        if (found != 0) {
            return found > 0 ? 1 : 0;  // without a queue there is nothing to wait for
        }
        sim::waitABit();
    }
}
}
