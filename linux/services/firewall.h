// firewalld's rules at run time.
#ifndef TAV_LINUX_SERVICES_FIREWALL_H
#define TAV_LINUX_SERVICES_FIREWALL_H

#include <simdjson.h>

#include "linux/bus/reply.h"

namespace tavlinux {

// {"protocol":"TCP","port":NUMBER,"isEnabled":FLAG}: opens or closes the port in the default zone.
Dispatched setFirewallRule(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux

#endif
