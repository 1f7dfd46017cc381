// Where the device is. The position is the device's, whoever tracks it.
#ifndef TAV_SIMULATOR_WORLD_POSITION_H
#define TAV_SIMULATOR_WORLD_POSITION_H

#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "simulator/device/profile.h"
#include "simulator/time/clock.h"

namespace tavsim {

// What whoever tracks the location hears: a fix, or an error code.
using Report = std::variant<Fix, int>;

// The code that stands for no fix.
inline constexpr int kNoFix = 2;

// Tells it to whoever tracks the location. Defined by the location service.
void announce(const Report& report);

// What happens on a way, and when since its begin.
struct Moment {
    Milliseconds at = 0;
    Report report;
};

// Gives one moment after the other, and none at the end.
using Way = std::function<std::optional<Moment>()>;

// The device is there from now on. It ends the way that it was on.
void placeDevice(const Fix& fix);

// The device sets out on a way, which the state "movement" calls so.
void setOut(const std::string& movement, Way way);

// From now on there is no position to be told, only this error; and then there is again. The device
// goes on moving meanwhile. False when it was not lost.
void loseLocation(int code);
bool findLocation();

// Somebody begins to track the location: what they hear at once, if there is anything. The first
// one sets the device out on the way of its profile, unless it has been placed.
std::optional<Report> beginTracking();

// Where the device is; before it has been anywhere, the first fix of its profile.
std::optional<Fix> presentFix();

void stopWorld();

}  // namespace tavsim

#endif
