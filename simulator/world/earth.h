// Distances and directions on the earth, as a sphere: in metres, and in degrees clockwise from
// north.
#ifndef TAV_SIMULATOR_WORLD_EARTH_H
#define TAV_SIMULATOR_WORLD_EARTH_H

namespace tavsim {

struct Place {
    double latitude = 0.0;
    double longitude = 0.0;
};

// Along the great circle.
double distanceBetween(const Place& from, const Place& to);

// The direction in which the great circle sets out.
double bearingTo(const Place& from, const Place& to);

Place placeAt(const Place& from, double bearing, double distance);

}  // namespace tavsim

#endif
