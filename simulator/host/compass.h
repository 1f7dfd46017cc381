// The compass: its readings, and the callback that receives them.
#ifndef TAV_SIMULATOR_HOST_COMPASS_H
#define TAV_SIMULATOR_HOST_COMPASS_H

#include "platform/napp.h"
#include "simulator/device/profile.h"

namespace tavsim {

void setCompassCallback(NApp_CompassCallback callback);

// While it is enabled, it delivers the profile's readings, one in each interval.
void enableCompass(bool enable);

// Whether the readings follow the device's heading, instead of the profile.
void letCompassFollow(bool follow);

// Delivers a reading now; false when nobody has registered a callback.
bool deliverCompassReading(const CompassReading& reading);

void stopCompass();

}  // namespace tavsim

#endif
