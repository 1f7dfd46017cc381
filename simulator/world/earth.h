// Distances and directions on the earth, as a sphere: in metres, and in degrees clockwise from
// north.
#pragma once

namespace tavsim {

struct Place {
    double latitude = 0.0;
    double longitude = 0.0;
};

// The distance along the great circle.
double distanceBetween(const Place& from, const Place& to);

// The initial direction of the great circle.
double bearingTo(const Place& from, const Place& to);

Place placeAt(const Place& from, double bearing, double distance);

}  // namespace tavsim
