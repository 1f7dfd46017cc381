// Host statuses, and booleans in payloads.
#pragma once

#include "SDL.h"
#include "tav.h"

namespace tav {

// The error code for a status of the host library.
int convertFromNAppError(Sint32 status);

}  // namespace tav

// "true" or "false", as JSON spells it. Visible to other modules of the platform.
TAV_API const char* getBooleanString(SDL_bool value);
