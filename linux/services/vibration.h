// Vibrating, by feedbackd or by the motor itself.
#ifndef TAV_LINUX_SERVICES_VIBRATION_H
#define TAV_LINUX_SERVICES_VIBRATION_H

#include <simdjson.h>

#include "linux/bus/reply.h"

namespace tavlinux {

// {"period":MS,"duration":MS}: on and off again within each period, or on all the time where it is
// 0.
Dispatched vibrate(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux

#endif
