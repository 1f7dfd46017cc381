// Checks of a whole scenario before it is played.
#pragma once

#include <string>
#include <vector>

#include "platform/visibility.h"
#include "simulator/device/profile.h"
#include "simulator/scenario/scenario.h"

namespace tavsim {

// A line about the first step that can never be done, as FILE:LINE: REASON; empty where each of
// them can.
std::string whyUnreachable(const Scenario& scenario);

// Lines of that form about services and items that neither the device, nor its profile, nor the
// scenario knows. The program may know them.
TAV_PLATFORM_API std::vector<std::string> warningsOf(const Scenario& scenario,
                                                     const Profile& profile);

}  // namespace tavsim
