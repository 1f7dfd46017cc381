// Listening for positions, for the location service and the compass.
#pragma once

#include "linux/services/position.h"

namespace tavlinux {

// The first listener starts GeoClue, or where there is none, the desktop portal. Returns a number
// for stopListening, or 0 when there is no bus.
int listenForPositions(PositionListener listener);

// The listener is not called any more. When the last one stops, the location service is stopped.
void stopListening(int number);

}  // namespace tavlinux
