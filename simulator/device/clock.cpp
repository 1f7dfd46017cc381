#include "simulator/device/clock.h"

#include <chrono>
#include <thread>

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

bool g_virtual = false;
std::thread::id g_thread;  // the application's; other threads, as SDL's timers are, sleep for real
long g_virtualNow = 0;
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

long now() {
    if (g_virtual) {
        return g_virtualNow;
    }
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(SteadyClock::now() - g_startedAt).count();
}

void setTime(long milliseconds) {
    if (g_virtual && milliseconds > g_virtualNow) {
        g_virtualNow = milliseconds;
    }
}

}  // namespace tavsim
