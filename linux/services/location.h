// The location service.
#ifndef TAV_LINUX_SERVICES_LOCATION_H
#define TAV_LINUX_SERVICES_LOCATION_H

#include <simdjson.h>

#include "linux/bus/reply.h"

namespace tavlinux {

// Answers with a fix each time there is a new one: "errorCode" 0 and the seven values, of which
// those that GeoClue does not know are -1.0 (the vertical accuracy always is). "errorCode" 5: the
// user does not allow it; 1: it could not be started for another reason.
Dispatched startTracking(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux

#endif
