// The media players.
#ifndef TAV_LINUX_SERVICES_MEDIA_H
#define TAV_LINUX_SERVICES_MEDIA_H

#include <simdjson.h>

#include "linux/bus/reply.h"

namespace tavlinux {

// Pauses every player that MPRIS knows.
Dispatched pauseMedia(const simdjson::dom::object& request, const Answer& answer);

}  // namespace tavlinux

#endif
