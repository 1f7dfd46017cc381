// The state of location tracking.
#ifndef TAV_DEVICE_LOCATION_H
#define TAV_DEVICE_LOCATION_H

#include "SDL.h"
#include "tav.h"

namespace tav {

// Events point at this state, so it never moves, and a location event's pointer is read as a
// TAV_Location.
struct gpsCallbackContext {
    gpsCallbackContext();

    // Forgets fix, failure and tracking; the open call stays.
    void clear();

    TAV_Location location;
    Sint32 tracking;
    Sint32 failure;
    Sint32 callId;
};

extern gpsCallbackContext g_GPSContext;

void gpsCallback(int token, const char* reply, void* context);

}  // namespace tav

#endif
