// The location service, which sends the device's position.
#ifndef TAV_SIMULATOR_BUS_LOCATION_H
#define TAV_SIMULATOR_BUS_LOCATION_H

#include <string>

#include "simulator/bus/answer.h"
#include "simulator/world/position.h"

namespace tavsim {

inline constexpr char kLocationUri[] = "vire://com.vire.location/startTracking";

Answer startTracking(const simdjson::dom::object& request);

std::string locationErrorReply(int code);

// Answers all who track the location.
void announceLocation(const Report& report);

}  // namespace tavsim

#endif
