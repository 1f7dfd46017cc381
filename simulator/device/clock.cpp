#include "simulator/device/clock.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

bool g_virtual = false;
std::thread::id g_thread;  // the application's; other threads, as SDL's timers are, sleep for real
Milliseconds g_virtualNow = 0;
SteadyClock::time_point g_startedAt = SteadyClock::now();

}  // namespace

void startClock(bool virtualTime) {
    g_virtual = virtualTime;
    g_thread = std::this_thread::get_id();
    g_virtualNow = 0;
    g_startedAt = SteadyClock::now();
}

bool isOnDeviceThread() {
    return std::this_thread::get_id() == g_thread;
}

bool isTimeVirtual() {
    return g_virtual;
}

Milliseconds now() {
    if (g_virtual) {
        return g_virtualNow;
    }
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(SteadyClock::now() - g_startedAt).count();
}

Milliseconds after(Milliseconds moment, Milliseconds stretch) {
    constexpr Milliseconds kLast = std::numeric_limits<Milliseconds>::max();
    return stretch < kLast - moment ? moment + std::max<Milliseconds>(stretch, 0) : kLast;
}

void setTime(Milliseconds moment) {
    if (g_virtual && moment > g_virtualNow) {
        g_virtualNow = moment;
    }
}

}  // namespace tavsim
