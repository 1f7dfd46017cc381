// The services that every device has.
#ifndef TAV_SIMULATOR_BUS_SERVICES_H
#define TAV_SIMULATOR_BUS_SERVICES_H

#include <optional>
#include <string>

#include "simulator/device/profile.h"

namespace tavsim {

inline constexpr char kLocationUri[] = "vire://com.vire.location/startTracking";

// The location service's reply that carries a fix.
std::string fixReply(const Fix& fix);

// What comes back on one request; its first reply is worked out when the request arrives.
struct Answer {
    std::vector<Reply> replies;
    int delay = 0;
    int every = 0;
};

// Carries the request out. The journal shows what it changed.
Answer deviceServiceAnswer(const std::string& uri, const std::string& payload);

}  // namespace tavsim

#endif
