// The compass: where it points, and to whom it says so.
#ifndef TAV_SIMULATOR_HOST_COMPASS_H
#define TAV_SIMULATOR_HOST_COMPASS_H

#include "platform/napp.h"
#include "simulator/device/profile.h"

namespace tavsim {

void setCompassCallback(NApp_CompassCallback callback);

// Readings come from the profile, one each interval, while it is enabled.
void enableCompass(bool enable);

// Whether the readings tell where the device is heading, in place of what the profile says.
void letCompassFollow(bool follow);

// Delivers a reading now; false when nobody has registered a callback.
bool deliverCompassReading(const CompassReading& reading);

void stopCompass();

}  // namespace tavsim

#endif
