// SDL's timers on virtual time. SDL runs its timers on a thread of its own, which sleeps in real
// time. These fire on the application's thread when it lets time pass.
#pragma once

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

// These move virtual time, without waiting, from one timer to the next. On the application's thread
// only.

// The application waits until a moment: fires the timers that fall due until then.
void passTime(Milliseconds until);

// The application polls its events or reads the time without waiting. If it never waits, time would
// stand still. So after a thousand such calls at the same moment a millisecond passes, and the
// first time standard error says so.
void lookWithoutWaiting();

}  // namespace tavsim
