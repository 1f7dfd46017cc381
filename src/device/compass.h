// The compass's state, and what the host and the start of the library do to it.
#pragma once

#include "SDL.h"
#include "tav.h"

namespace tav {

// The latest reading. Events point at it.
extern TAV_CompassReading g_compass;

// The SDL_bool of the last TAV_EnableCompass that the host accepted.
extern Sint32 g_bCompassActive;

// The state of no reading yet.
void resetCompass();

// Stores and announces a reading, whether or not the compass is enabled.
void compassCallback(Sint32 intValue, double doubleValue1, double doubleValue2);

}  // namespace tav
