// The cached hardware id.
#ifndef TAV_DEVICE_HARDWARE_H
#define TAV_DEVICE_HARDWARE_H

#include "SDL.h"

namespace tav {

inline constexpr Sint32 kUnknownHardware = -1;

// Filled by the first query that finds a known machine. On unknown hardware it keeps the value for
// "not looked up yet", so every query looks again.
extern Sint32 g_hardwareType;

}  // namespace tav

#endif
