// The compass: its readings, and the callback that receives them.
#pragma once

#include <optional>

#include "platform/napp.h"
#include "simulator/device/profile.h"

namespace tavsim {

void setCompassCallback(NApp_CompassCallback callback);

// While it is enabled, it delivers the profile's readings, one in each interval.
void enableCompass(bool enable);

// Whether the readings follow the device's heading, instead of the profile.
void letCompassFollow(bool follow);

struct CompassState {
    bool isOn;
    std::optional<double> heading;  // of the last reading
    bool follows;
    bool isHeld;
};
CompassState compassState();

// From now on the readings have this heading, whatever else they would have; nothing ends that.
void holdCompass(std::optional<double> heading);

// Delivers a reading now; false when nobody has registered a callback.
TAV_PLATFORM_API bool deliverCompassReading(const CompassReading& reading);

void stopCompass();

}  // namespace tavsim
