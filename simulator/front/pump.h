// When the device delivers: while the application polls, waits for or pumps SDL events.
#ifndef TAV_SIMULATOR_FRONT_PUMP_H
#define TAV_SIMULATOR_FRONT_PUMP_H

#include "simulator/time/clock.h"

namespace tavsim {

// Serves the control socket and delivers what is due.
void pumpNow();

// Virtual time: moves the clock from one due delivery to the next and at last to `time`.
void pumpUntil(Milliseconds time);

}  // namespace tavsim

#endif
