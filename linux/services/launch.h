// The browser and the e-mail application.
#ifndef TAV_LINUX_SERVICES_LAUNCH_H
#define TAV_LINUX_SERVICES_LAUNCH_H

#include <simdjson.h>

#include "linux/bus/reply.h"

namespace tavlinux {

// {"id":APPLICATION,"params":…}: by the desktop portal, or where it is not there, by xdg-open.
Dispatched launchApplication(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux

#endif
