// The touch screen. To SDL, a finger is the left button of a mouse.
#pragma once

#include <string>

#include "SDL.h"
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

// Ends a drag, and forgets the state that was sent.
void stopTouch();

// The mouse, which stands for the touch screen.
struct Mouse {
    int x = 0;
    int y = 0;
    Uint8 buttons = 0;  // a bit for each, as of SDL_BUTTON()

    bool operator==(const Mouse&) const = default;
};

// These two may be called on any thread.

// The state that was sent last, until the real mouse moves.
Mouse mouseNow();

// The motion since the last call, instead of the position.
Mouse mouseMovement();

void followMotion(const SDL_MouseMotionEvent& event);
void followButton(const SDL_MouseButtonEvent& event);

}  // namespace tavsim
