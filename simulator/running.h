// When the device starts by itself.
#ifndef TAV_SIMULATOR_RUNNING_H
#define TAV_SIMULATOR_RUNNING_H

#include "simulator/device.h"

namespace sim {

// True when the device runs or should: the process uses the library. A shell that only inherited
// the preloaded simulator is left alone.
bool isWanted();

// The device, started from the environment if it does not run yet. Ends the process with status 2
// and a line on standard error when what the environment asks for cannot be had.
Device& running();

// Told by the device itself.
void setStarted(bool started);

// What TAVSIM_… variables ask for. False, with a line in `error`, when that cannot be had.
bool environmentSetup(Profile* profile, Options* options, std::string* error);

}  // namespace sim

#endif
