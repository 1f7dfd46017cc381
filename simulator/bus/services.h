// The services that every device has.
#ifndef TAV_SIMULATOR_BUS_SERVICES_H
#define TAV_SIMULATOR_BUS_SERVICES_H

#include <string>

#include "simulator/bus/answer.h"

namespace tavsim {

inline constexpr char kLocationUri[] = "vire://com.vire.location/startTracking";

// The location service's replies: a fix, and the code of an error.
std::string fixReply(const Fix& fix);
std::string locationErrorReply(int code);

// Carries the request out. The journal shows what it changed.
Answer deviceServiceAnswer(const std::string& uri, const std::string& payload);

}  // namespace tavsim

#endif
