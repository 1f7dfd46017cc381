#include "simulator/time/timers.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "base/print_line.h"
#include "front/next.h"

namespace tavsim {
namespace {

constexpr Milliseconds kResolution = 10;

constexpr int kLooksInAMillisecond = 1000;

constexpr char kNeverWaits[] =
    "tavsim: the program polls without waiting, so from now on a millisecond of virtual time "
    "passes with every 1000 calls of SDL_PollEvent, SDL_PumpEvents or SDL_GetTicks. SDL_Delay and "
    "SDL_WaitEvent let time pass at once.";

// Paced time would stand still if each check took long.
constexpr int kLooksInVain = 50;
constexpr Milliseconds kLongestLag = 1000;

constexpr char kNeverWaitsForReal[] =
    "tavsim: the program does not wait with SDL_Delay or SDL_WaitEvent, so the times of this "
    "recording depend on this machine";

struct Timer {
    SDL_TimerID id;
    Milliseconds due;
    Milliseconds interval;
    SDL_NewTimerCallback function;
    void* parameter;
};

struct Timers {
    std::mutex mutex;  // guards the following; not held while a timer's function runs
    std::vector<Timer> all;
    std::uintptr_t lastId = 0;
};

Timers& timers() {
    // Never destroyed, because threads that outlive static objects still use it.
    static Timers& instance = *new Timers;
    return instance;
}

Milliseconds rounded(Uint32 interval) {
    const Milliseconds ticks = (interval + kResolution - 1) / kResolution;
    return std::max<Milliseconds>(ticks, 1) * kResolution;
}

std::vector<Timer>::iterator find(SDL_TimerID id) {
    return std::ranges::find(timers().all, id, &Timer::id);
}

std::optional<Timer> first() {
    const std::lock_guard lock(timers().mutex);
    auto& all = timers().all;
    if (!all.empty() && !areTimersInitialized()) {
        all.clear();
    }
    const auto found = std::ranges::min_element(all, {}, &Timer::due);
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

int g_looks = 0;
bool g_firing = false;

void sayOnce(const char* text, bool* said) {
    if (!std::exchange(*said, true)) {
        base::printLine(stderr, text);
    }
}

// Calls the function of the timer that is due next.
void fireNextTimer() {
    const std::optional<Timer> due = first();
    if (!due) {
        return;
    }
    const Uint32 interval = due->function(static_cast<Uint32>(due->interval), due->parameter);
    if (interval == 0) {
        removeTimer(due->id);
        return;
    }
    const std::lock_guard lock(timers().mutex);
    const auto timer = find(due->id);
    if (timer != timers().all.end()) {  // it may have been removed meanwhile
        timer->interval = rounded(interval);
        timer->due = std::max(after(due->due, timer->interval), now());
    }
}

void fireTimersUntil(Milliseconds until) {
    // A timer's function that waits makes the others wait too.
    if (std::exchange(g_firing, true)) {
        return;
    }
    for (auto due = nextTimer(); due && *due <= until; due = nextTimer()) {
        setTime(*due);
        fireNextTimer();
    }
    g_firing = false;
}

}  // namespace

SDL_TimerID addTimer(Uint32 interval, SDL_NewTimerCallback function, void* parameter) {
    const std::lock_guard lock(timers().mutex);
    // SDL's timer ids are pointers, which are never dereferenced.
    auto* const id =
        reinterpret_cast<SDL_TimerID>(++timers().lastId);  // NOLINT(performance-no-int-to-ptr)
    const Milliseconds period = rounded(interval);
    timers().all.push_back({id, after(now(), period), period, function, parameter});
    return id;
}

bool removeTimer(SDL_TimerID id) {
    const std::lock_guard lock(timers().mutex);
    const auto timer = find(id);
    if (timer == timers().all.end()) {
        return false;
    }
    timers().all.erase(timer);
    return true;
}

void removeAllTimers() {
    const std::lock_guard lock(timers().mutex);
    timers().all.clear();
}

bool areTimersInitialized() {
    static const auto wasInit = TAV_FRONT_NEXT(SDL_WasInit);
    return wasInit(SDL_INIT_TIMER) != 0;
}

std::optional<Milliseconds> nextTimer() {
    const std::optional<Timer> timer = first();
    return timer ? std::optional(timer->due) : std::nullopt;
}

void passTime(Milliseconds until) {
    g_looks = 0;
    fireTimersUntil(until);
    setTime(until);
}

void lookWithoutWaiting() {
    ++g_looks;
    if (isTimePaced() && g_looks >= kLooksInVain && lag() > inPace(kLongestLag)) {
        static bool said = false;
        sayOnce(kNeverWaitsForReal, &said);
        passTime(after(now(), lag()));
    }
    if (g_looks >= kLooksInAMillisecond) {
        static bool said = false;
        sayOnce(kNeverWaits, &said);
        passTime(after(now(), 1));
    }
}

}  // namespace tavsim
