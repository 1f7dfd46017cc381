// The simulated message bus.
#ifndef TAV_SIMULATOR_BUS_BUS_H
#define TAV_SIMULATOR_BUS_BUS_H

#include <string>
#include <vector>

#include "simulator/device/profile.h"

namespace tavsim {

// Withdraws every call.
void clearBus();

std::vector<int> openBusCalls(const std::string& uri);

// Hands a reply to an open call now; false when the token stands for none.
bool deliverReply(int token, const Reply& reply);

}  // namespace tavsim

#endif
