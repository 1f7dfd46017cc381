// Walks along great circles, and distances and directions on the earth, which is a sphere here: in
// metres, and in degrees clockwise from north.
#pragma once

#include <vector>

#include "simulator/world/position.h"

namespace tavsim {

struct Place {
    double latitude = 0.0;
    double longitude = 0.0;
};

// Coordinates and directions are rounded to the device's precision.
Fix roundedFix(Fix fix);

// A walk from the first place to the last, at a speed in metres a second, with a fix every so many
// metres and one at the end, where the device stands still. Altitude and accuracy are those of
// `like`.
Way walkAlong(const std::vector<Place>& places, double speed, double metres, const Fix& like);

// The distance along the great circle.
double distanceBetween(const Place& from, const Place& to);

// The initial direction of the great circle.
double bearingTo(const Place& from, const Place& to);

Place placeAt(const Place& from, double bearing, double distance);

}  // namespace tavsim
