// The touch screen. To SDL, a finger is the left button of a mouse.
#pragma once

#include <string>

#include "simulator/time/clock.h"

namespace tavsim {

struct Point {
    int x = 0;
    int y = 0;
};

// Each returns false, with a line in `error` and nothing done, when the point is not on the
// application's surface, the finger is not in the right state, or the application's event queue has
// not enough room. A move without a finger is the motion of a mouse.
bool touchDown(const Point& point, std::string* error);
bool touchMove(const Point& point, std::string* error);
bool touchUp(const Point& point, std::string* error);
bool tapScreen(const Point& point, std::string* error);

// Returns at once; the finger moves as time passes.
bool dragFinger(const Point& from, const Point& to, Milliseconds time, std::string* error);

void stopTouch();

}  // namespace tavsim
