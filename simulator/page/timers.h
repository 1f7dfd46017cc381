// setTimeout, setInterval, clearTimeout and clearInterval. The script's functions are kept here;
// the device's clock says when they are due.
#ifndef TAV_SIMULATOR_PAGE_TIMERS_H
#define TAV_SIMULATOR_PAGE_TIMERS_H

#include "simulator/page/engine.h"

namespace tavsim {

// Adds the functions to the global object, which is on top.
void addTimers(duk_context* engine);

// Calls the function of the timer that the message from the device names.
void runTimer(duk_context* engine);

}  // namespace tavsim

#endif
