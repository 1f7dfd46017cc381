// The position of the device. It does not depend on who tracks it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "simulator/device/profile.h"
#include "simulator/time/clock.h"

namespace tavsim {

// What applications that track the location receive: a fix, or an error code.
using Report = std::variant<Fix, int>;

// The error code for "no fix".
inline constexpr int kNoFix = 2;

// An event on a way, and its time since the start of the way.
struct Moment {
    Milliseconds at = 0;
    Report report;
};

// Returns one moment after the other, and nothing at the end.
using Way = std::function<std::optional<Moment>()>;

// Puts the device there, and ends its current way.
void placeDevice(const Fix& fix);

// Starts a way; the state "movement" gets this name.
void setOut(const std::string& movement, Way way);

// From now on this error is sent instead of the position, until the position is found again. The
// device goes on moving meanwhile. False when it was not lost.
void loseLocation(int code);
bool findLocation();

// From now on a fix is announced every so often, wherever the device is, and for no other reason.
void setReceiver(const Receiver& receiver);

// Called when an application begins to track the location; returns what it receives at once, if
// anything. The first call starts the way of the profile, unless the device has been placed.
std::optional<Report> beginTracking();

// The device's position; before it has one, the first fix of its profile.
std::optional<Fix> presentFix();

// The error that is sent instead of the position, while it is lost.
std::optional<int> lossOfLocation();

// Reports go to the function, for all who track the location, until the world is stopped.
void startWorld(std::function<void(const Report&)> announce);
void stopWorld();

}  // namespace tavsim
