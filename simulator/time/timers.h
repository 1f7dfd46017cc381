// SDL's timers on virtual time. SDL runs its timers on a thread of its own, which sleeps in real
// time. These fire on the application's thread when it lets time pass.
#ifndef TAV_SIMULATOR_TIME_TIMERS_H
#define TAV_SIMULATOR_TIME_TIMERS_H

#include <optional>

#include "SDL.h"
#include "simulator/time/clock.h"

namespace tavsim {

// These may be called on any thread, and by a timer's function. An interval is rounded up to a
// multiple of 10 milliseconds, as in SDL.
SDL_TimerID addTimer(Uint32 interval, SDL_NewTimerCallback function, void* parameter);
bool removeTimer(SDL_TimerID id);
void removeAllTimers();

// Sets whether SDL's timers are initialized; when not, all timers are removed.
bool areTimersInitialized();

// When the next timer falls due, if there is one.
std::optional<Milliseconds> nextTimer();

// Calls the function of the timer that is due next. On the application's thread.
void fireNextTimer();

}  // namespace tavsim

#endif
