// The services that every device has.
#ifndef TAV_SIMULATOR_SERVICES_H
#define TAV_SIMULATOR_SERVICES_H

#include <optional>
#include <string>

#include "simulator/profile.h"

namespace sim {

// What comes back on one request; its first reply is worked out when the request arrives.
struct Answer {
    std::vector<Reply> replies;
    int delay = 0;
    int every = 0;
};

// Carries the request out. The journal shows what it changed.
Answer deviceServiceAnswer(const std::string& uri, const std::string& payload);

}  // namespace sim

#endif
