// The touch screen on the device's clock. While a drag is under way, nothing else touches it.
#pragma once

#include <string>

#include "input/touch.h"
#include "simulator/time/clock.h"

namespace tavsim {

using input::Point;

// Each returns false, with a line in `error` and nothing done, when the point is not on the
// application's surface, the finger is not in the right state, or the application's event queue has
// not enough room. A move without a finger is the motion of a mouse.
bool touchDown(const Point& point, std::string* error);
bool touchMove(const Point& point, std::string* error);
bool touchUp(const Point& point, std::string* error);
bool tapScreen(const Point& point, std::string* error);

// Returns at once; the finger moves as time passes.
bool dragFinger(const Point& from, const Point& to, Milliseconds time, std::string* error);

// Leaves a drag where it is.
void stopDrag();

}  // namespace tavsim
