// While the application handles SDL's events, this system delivers.
#include "front/events.h"

#include <atomic>

#include "linux/bus/pump.h"

namespace front {

constinit std::atomic<bool> g_isAwake = true;

bool takesPart() {
    return tavlinux::isApplicationThread() && tavlinux::isStarted();
}

void deliver() {
    tavlinux::pump();
}

void looked(const SDL_Event*) {
}

void waitForNext() {
    constexpr int step = 10;  // milliseconds, as SDL itself has between two looks at its queue
    tavlinux::waitForDelivery(step);
}

}  // namespace front
