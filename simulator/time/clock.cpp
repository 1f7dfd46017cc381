#include "simulator/time/clock.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

// Set when the simulator is loaded, so nothing may initialize them later.
constinit std::atomic<pthread_t> g_thread = {};
constinit std::atomic<bool> g_virtual = false;
constinit std::atomic<Milliseconds> g_virtualNow = 0;
constinit std::atomic<SteadyClock::time_point> g_startedAt = {};

__attribute__((constructor)) void startWithProgram() {
    const char* virtualTime = std::getenv("TAVSIM_VIRTUAL_TIME");
    startClock(virtualTime != nullptr && std::string_view(virtualTime) == "1");
}

}  // namespace

void startClock(bool virtualTime) {
    g_thread = pthread_self();
    g_virtualNow = 0;
    g_startedAt = SteadyClock::now();
    g_virtual = virtualTime;
}

bool isTimeVirtual() {
    return g_virtual.load(std::memory_order_acquire);
}

bool isOnApplicationThread() {
    return pthread_equal(pthread_self(), g_thread.load(std::memory_order_relaxed)) != 0;
}

Milliseconds now() {
    if (isTimeVirtual()) {
        return g_virtualNow.load(std::memory_order_acquire);
    }
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(SteadyClock::now() - g_startedAt.load())
        .count();
}

Milliseconds after(Milliseconds moment, Milliseconds stretch) {
    constexpr Milliseconds kLast = std::numeric_limits<Milliseconds>::max();
    return stretch < kLast - moment ? moment + std::max<Milliseconds>(stretch, 0) : kLast;
}

void setTime(Milliseconds moment) {
    if (isTimeVirtual() && moment > now()) {
        g_virtualNow.store(moment, std::memory_order_release);
    }
}

}  // namespace tavsim
