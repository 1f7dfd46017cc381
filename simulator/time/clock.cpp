#include "simulator/time/clock.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

#include "base/environment.h"
#include "front/events.h"
#include "simulator/time/pacing.h"

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBusy(250);

// Set when the simulator is loaded, so no later static initialization may overwrite them.
constinit std::atomic<pthread_t> g_thread = {};
constinit std::atomic<Pace> g_pace = Pace::Real;
constinit std::atomic<Milliseconds> g_virtualNow = 0;
constinit std::atomic<SteadyClock::time_point> g_startedAt = {};
constinit Pacing g_pacing = {};
constinit std::atomic<bool (*)(Milliseconds, Wait)> g_meanwhile = nullptr;

Milliseconds sinceStart(std::chrono::nanoseconds time) {
    const auto start = g_startedAt.load().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time - start).count();
}

Milliseconds realNow() {
    return sinceStart(SteadyClock::now().time_since_epoch());
}

// Waits for real time. If real time is far ahead because the program was busy, the clock does not
// hurry to catch up.
void keepPace(Milliseconds moment) {
    const SteadyClock::time_point time = g_pacing.timeOf(moment);
    if (SteadyClock::now() - time > kBusy) {
        g_pacing = {SteadyClock::now(), moment, g_pacing.factor};
    }
    useWait(
        std::chrono::duration_cast<std::chrono::milliseconds>(time - SteadyClock::now()).count());
    std::this_thread::sleep_until(time);
}

__attribute__((constructor)) void startWithProgram() {
    const bool isVirtual = base::environment("TAVSIM_VIRTUAL_TIME") == "1";
    const bool isRecorded = !base::environment("TAVSIM_RECORD").empty();
    startClock(isVirtual ? Pace::Virtual : isRecorded ? Pace::Paced : Pace::Real);
}

}  // namespace

void startClock(Pace pace) {
    g_thread = pthread_self();
    g_virtualNow = 0;
    g_startedAt = SteadyClock::now();
    g_pacing = {SteadyClock::now(), 0, 1};
    g_pace = pace;
    if (pace != Pace::Real) {
        front::wake();
    }
}

bool isTimeVirtual() {
    return g_pace.load(std::memory_order_acquire) != Pace::Real;
}

bool isTimePaced() {
    return g_pace.load(std::memory_order_acquire) == Pace::Paced;
}

bool isOnApplicationThread() {
    return pthread_equal(pthread_self(), g_thread.load(std::memory_order_relaxed)) != 0;
}

Milliseconds now() {
    if (isTimeVirtual()) {
        return g_virtualNow.load(std::memory_order_acquire);
    }
    return realNow();
}

Milliseconds realTimeAtLeast() {
    timespec time;  // the steady clock at the kernel's last tick
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    const Milliseconds passed =
        sinceStart(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
    return std::max<Milliseconds>(passed, 0);  // the last tick may be before the start
}

bool mayHaveCome(Milliseconds moment) {
    return isTimeVirtual() ? moment <= now() : moment <= after(realTimeAtLeast(), kLateness);
}

Milliseconds after(Milliseconds moment, Milliseconds stretch) {
    constexpr Milliseconds kLast = std::numeric_limits<Milliseconds>::max();
    return stretch < kLast - moment ? moment + std::max<Milliseconds>(stretch, 0) : kLast;
}

void setMeanwhile(bool (*meanwhile)(Milliseconds longest, Wait wait)) {
    g_meanwhile = meanwhile;
}

Milliseconds useWait(Milliseconds longest, Wait wait) {
    const auto meanwhile = g_meanwhile.load();
    if (meanwhile == nullptr || longest <= 0 || !isOnApplicationThread()) {
        return longest;
    }
    const SteadyClock::time_point end = SteadyClock::now() + std::chrono::milliseconds(longest);
    if (meanwhile(longest, wait)) {
        return 0;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
    return std::max<Milliseconds>(left.count(), 0);
}

void setTime(Milliseconds moment) {
    if (isTimeVirtual() && moment > now()) {
        if (isTimePaced()) {
            keepPace(moment);
        }
        g_virtualNow.store(moment, std::memory_order_release);
    }
}

Milliseconds waitInPace(Milliseconds until) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(g_pacing.timeOf(until) -
                                                                            SteadyClock::now());
    if (left.count() <= 0 || useWait(left.count(), Wait::ForEvents) > 0) {
        return until;
    }
    return std::clamp(g_pacing.momentAt(SteadyClock::now()), now(), until);
}

Milliseconds lag() {
    return g_pacing.momentAt(SteadyClock::now()) - now();
}

double paceFactor() {
    return g_pacing.factor;
}

void setPaceFactor(double factor) {
    g_pacing = {SteadyClock::now(), now(), factor};
}

Milliseconds inPace(Milliseconds real) {
    return static_cast<Milliseconds>(static_cast<double>(real) * paceFactor());
}

void forgetLag() {
    setPaceFactor(paceFactor());
}

}  // namespace tavsim
