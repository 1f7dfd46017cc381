// An application's requests to services by their names on D-Bus.
#ifndef TAV_LINUX_BUS_SERVICE_CALL_H
#define TAV_LINUX_BUS_SERVICE_CALL_H

#include <string>

#include "linux/bus/reply.h"

namespace tavlinux {

// vire://SERVICE/METHOD calls the object whose path is the service's name with slashes for dots;
// vire://SERVICE/PATH/METHOD the one at /PATH. A method of an interface that is not the service's
// own may be spelled INTERFACE.METHOD. Without an answer nobody wants a reply.
Dispatched callService(const std::string& uri, const std::string& payload, bool isSubscription,
                       Answer answer);

}  // namespace tavlinux

#endif
