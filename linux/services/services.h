// The device's services on this system. Applications reach them by the URIs of bus_caller.cpp.
#pragma once

#include <simdjson.h>

#include "linux/bus/service_call.h"

namespace tavlinux {

// {"period":MS,"duration":MS}: on for half of each period, or all the time when it is 0. Uses
// feedbackd or the motor itself.
Dispatched vibrate(const simdjson::dom::object& request, const Answer& answer);

// {"protocol":"TCP","port":NUMBER,"isEnabled":FLAG}: opens or closes the port in firewalld's
// default zone, until firewalld restarts.
Dispatched setFirewallRule(const simdjson::dom::object& request, const Answer& answer);

// Pauses every media player that MPRIS knows.
Dispatched pauseMedia(const simdjson::dom::object& request, const Answer& answer);

// {"id":APPLICATION,"params":…}: opens the browser or the e-mail application, by the desktop portal
// or, where there is none, by xdg-open.
Dispatched launchApplication(const simdjson::dom::object& request, const Answer& answer);

// Answers with each new fix: "errorCode" 0 and the seven values, -1.0 for unknown ones (always so
// for the vertical accuracy). "errorCode" 5: the user does not allow it; 1: it could not be started
// for another reason.
Dispatched startTracking(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux
