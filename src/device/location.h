// The state of location tracking.
#pragma once

#include "SDL.h"
#include "tav.h"

namespace tav {

// Events point at this state, so it never moves. The application reads a location event's pointer
// as a TAV_Location.
struct gpsCallbackContext {
    gpsCallbackContext();

    // Clears fix, failure and tracking, but not the open call.
    void clear();

    TAV_Location location;
    Sint32 tracking;
    Sint32 failure;
    Sint32 callId;
};

extern gpsCallbackContext g_GPSContext;

void gpsCallback(int token, const char* reply, void* context);

}  // namespace tav
