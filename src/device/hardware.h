// The cached hardware id.
#pragma once

#include "SDL.h"

namespace tav {

inline constexpr Sint32 kUnknownHardware = -1;

// Filled by the first query that finds a known machine. On unknown hardware it keeps the value for
// "not looked up yet", so every query looks again.
extern Sint32 g_hardwareType;

}  // namespace tav
