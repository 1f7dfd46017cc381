#include "simulator/time/timers.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "front/next.h"

namespace tavsim {
namespace {

constexpr Milliseconds kResolution = 10;

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

bool isEarlier(const Timer& left, const Timer& right) {
    return left.due < right.due;
}

std::vector<Timer>::iterator find(SDL_TimerID id) {
    auto& all = timers().all;
    return std::find_if(all.begin(), all.end(),
                        [id](const Timer& timer) { return timer.id == id; });
}

std::optional<Timer> first() {
    const std::lock_guard lock(timers().mutex);
    auto& all = timers().all;
    if (!all.empty() && !areTimersInitialized()) {
        all.clear();
    }
    const auto found = std::min_element(all.begin(), all.end(), isEarlier);
    return found != all.end() ? std::optional(*found) : std::nullopt;
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

}  // namespace tavsim
