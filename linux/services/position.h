// The data that all location services of this system provide.
#pragma once

#include <gio/gio.h>

#include <functional>

namespace tavlinux {

inline constexpr double kUnknown = -1.0;

// Unknown values are kUnknown.
struct Position {
    double latitude;
    double longitude;
    double altitude;  // metres
    double accuracy;  // metres
    double heading;   // degrees from north
    double speed;     // metres a second
};

// Both are called while the main context is iterated, so they must only queue deliveries.
struct PositionListener {
    std::function<void(const Position&)> onPosition;
    // Why there is no position, or no longer; null when the service's answer was malformed.
    std::function<void(const GError*)> onProblem;
};

// From the a{sv} that GeoClue and the desktop portal send.
Position positionFrom(GVariant* properties);

}  // namespace tavlinux
