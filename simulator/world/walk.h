// Walks along great circles.
#ifndef TAV_SIMULATOR_WORLD_WALK_H
#define TAV_SIMULATOR_WORLD_WALK_H

#include <vector>

#include "simulator/world/earth.h"
#include "simulator/world/position.h"

namespace tavsim {

// Where a coordinate or a direction says more than the device can know, it is rounded.
Fix roundedFix(Fix fix);

// From the first place to the last, at a speed in metres a second, with a fix every so many metres
// and one at the end, where the device stands still. Altitude and accuracy are those of `like`.
Way walkAlong(const std::vector<Place>& places, double speed, double metres, const Fix& like);

}  // namespace tavsim

#endif
