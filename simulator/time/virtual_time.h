// Moves virtual time, without waiting, from one SDL timer to the next. For the application's thread
// only.
#ifndef TAV_SIMULATOR_TIME_VIRTUAL_TIME_H
#define TAV_SIMULATOR_TIME_VIRTUAL_TIME_H

#include "simulator/time/clock.h"

namespace tavsim {

// The application waits until a moment: fires the timers that fall due until then.
void passTime(Milliseconds until);

// The application polls its events or reads the time without waiting. If it never waits, time would
// stand still. So after a thousand such calls at the same moment a millisecond passes, and the
// first time standard error says so.
void lookWithoutWaiting();

}  // namespace tavsim

#endif
