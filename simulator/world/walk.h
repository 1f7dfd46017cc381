// Walks along great circles.
#pragma once

#include <vector>

#include "simulator/world/earth.h"
#include "simulator/world/position.h"

namespace tavsim {

// Coordinates and directions are rounded to the device's precision.
Fix roundedFix(Fix fix);

// A walk from the first place to the last, at a speed in metres a second, with a fix every so many
// metres and one at the end, where the device stands still. Altitude and accuracy are those of
// `like`.
Way walkAlong(const std::vector<Place>& places, double speed, double metres, const Fix& like);

}  // namespace tavsim
