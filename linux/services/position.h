// What each location service of this system tells the library.
#pragma once

#include <gio/gio.h>

#include <functional>

namespace tavlinux {

inline constexpr double kUnknown = -1.0;

// What is not known is kUnknown.
struct Position {
    double latitude;
    double longitude;
    double altitude;  // metres
    double accuracy;  // metres
    double heading;   // degrees from north
    double speed;     // metres a second
};

// Both are called while the context is served, so they only queue what they deliver.
struct PositionListener {
    std::function<void(const Position&)> onPosition;
    // Why there is no position, or no more; null when the service answered something else.
    std::function<void(const GError*)> onProblem;
};

// From an a{sv} as GeoClue and the desktop portal have it.
Position positionFrom(GVariant* properties);

}  // namespace tavlinux
