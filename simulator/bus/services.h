// The services that every device has.
#ifndef TAV_SIMULATOR_BUS_SERVICES_H
#define TAV_SIMULATOR_BUS_SERVICES_H

#include <string>

#include "simulator/bus/answer.h"

namespace tavsim {

// Carries the request out. The journal gets its changes of state.
Answer deviceServiceAnswer(const std::string& uri, const std::string& payload);

}  // namespace tavsim

#endif
