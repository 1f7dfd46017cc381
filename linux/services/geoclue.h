// Where the machine is and where it heads, from GeoClue, or where there is none, the desktop
// portal.
#ifndef TAV_LINUX_SERVICES_GEOCLUE_H
#define TAV_LINUX_SERVICES_GEOCLUE_H

#include <gio/gio.h>

#include <functional>

namespace tavlinux {

inline constexpr char kGeoClue[] = "org.freedesktop.GeoClue2";

// What is not known is -1.0.
struct Position {
    double latitude;
    double longitude;
    double altitude;  // metres
    double accuracy;  // metres
    double heading;   // degrees from north
    double speed;     // metres a second
};

struct PositionListener {
    std::function<void(const Position&)> onPosition;
    std::function<void(const GError*)> onProblem;  // it could not be started
};

// Starts GeoClue's work with the first listener. A service that vanishes is found again when it is
// back. Returns a number for stopListening, or 0 when there is no bus.
int listenForPositions(PositionListener listener);

// Ends it with the last. The listener is not called any more.
void stopListening(int number);

}  // namespace tavlinux

#endif
