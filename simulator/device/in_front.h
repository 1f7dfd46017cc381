// Whether the simulator's functions are the ones that the program calls.
#ifndef TAV_SIMULATOR_DEVICE_IN_FRONT_H
#define TAV_SIMULATOR_DEVICE_IN_FRONT_H

namespace tavsim {

// Says once on standard error that nothing will ever be delivered, when that is so: the
// application's SDL functions are not the simulator's.
void warnIfNotInFront();

}  // namespace tavsim

#endif
