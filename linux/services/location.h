// The location service.
#ifndef TAV_LINUX_SERVICES_LOCATION_H
#define TAV_LINUX_SERVICES_LOCATION_H

#include <simdjson.h>

#include "linux/bus/reply.h"
#include "linux/services/position.h"

namespace tavlinux {

// Answers with a fix each time there is a new one: "errorCode" 0 and the seven values, of which
// those that are not known are -1.0 (the vertical accuracy always is). "errorCode" 5: the user does
// not allow it; 1: it could not be started for another reason.
Dispatched startTracking(const simdjson::dom::object& request, const Answer& answer);

// The first listener starts GeoClue, or where there is none, the desktop portal. Returns a number
// for stopListening, or 0 when there is no bus.
int listenForPositions(PositionListener listener);

// The last one ends it. The listener is not called any more.
void stopListening(int number);

}  // namespace tavlinux

#endif
