// The device's services on this system. Applications reach them by the URIs of bus_caller.cpp.
#pragma once

#include <simdjson.h>

#include "linux/bus/service_call.h"

namespace tavlinux {

// {"period":MS,"duration":MS}: on and off again within each period, or on all the time where it is
// 0. By feedbackd or by the motor itself.
Dispatched vibrate(const simdjson::dom::object& request, const Answer& answer);

// {"protocol":"TCP","port":NUMBER,"isEnabled":FLAG}: opens or closes the port in firewalld's
// default zone, until it starts again.
Dispatched setFirewallRule(const simdjson::dom::object& request, const Answer& answer);

// Pauses every media player that MPRIS knows.
Dispatched pauseMedia(const simdjson::dom::object& request, const Answer& answer);

// {"id":APPLICATION,"params":…}: the browser and the e-mail application, by the desktop portal, or
// where it is not there, by xdg-open.
Dispatched launchApplication(const simdjson::dom::object& request, const Answer& answer);

// Answers with a fix each time there is a new one: "errorCode" 0 and the seven values, of which
// those that are not known are -1.0 (the vertical accuracy always is). "errorCode" 5: the user does
// not allow it; 1: it could not be started for another reason.
Dispatched startTracking(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux
