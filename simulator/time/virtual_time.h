// How virtual time passes: at no cost, from one of SDL's timers to the next. All of this is the
// application's thread's alone.
#ifndef TAV_SIMULATOR_TIME_VIRTUAL_TIME_H
#define TAV_SIMULATOR_TIME_VIRTUAL_TIME_H

#include "simulator/time/clock.h"

namespace tavsim {

// The application waits until a moment: fires the timers that fall due by then.
void passTime(Milliseconds until);

// The application looks at its events or at the time without waiting. Where it does nothing else,
// time would stand still: after a thousand looks at one moment a millisecond passes, and the first
// time standard error says so.
void lookWithoutWaiting();

}  // namespace tavsim

#endif
