// SDL's timers on virtual time. SDL runs them on a thread of its own, which would sleep for real;
// these fire when the application lets time pass, on its thread.
#ifndef TAV_SIMULATOR_TIME_TIMERS_H
#define TAV_SIMULATOR_TIME_TIMERS_H

#include <optional>

#include "SDL.h"
#include "simulator/time/clock.h"

namespace tavsim {

// These can be called on any thread, and by a timer's function. An interval is rounded up to a
// multiple of 10 milliseconds, as SDL does.
SDL_TimerID addTimer(Uint32 interval, SDL_NewTimerCallback function, void* parameter);
bool removeTimer(SDL_TimerID id);
void removeAllTimers();

// Whether SDL's timers are initialized; their end is the end of each.
bool areTimersInitialized();

// When the next timer falls due, if there is one.
std::optional<Milliseconds> nextTimer();

// Calls the function of the timer that is due next. On the application's thread.
void fireNextTimer();

}  // namespace tavsim

#endif
