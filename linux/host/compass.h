// The compass, from the sensor service or from GeoClue.
#pragma once

#include "platform/napp.h"

namespace tavlinux {

void setCompassCallback(NApp_CompassCallback callback);

// A reading is 1, the heading in degrees from north, and 1.0. False when there is no compass.
bool enableCompass(bool enable);

}  // namespace tavlinux
