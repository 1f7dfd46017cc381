// The touch screen. To SDL, a finger is the left button of a mouse.
#pragma once

#include <string>
#include <vector>

#include "SDL.h"
#include "front/mouse.h"

namespace input {

struct Point {
    int x = 0;
    int y = 0;
};

// Builds the events of a finger.
class Finger {
public:
    bool isDown() const { return (m_mouse.buttons & SDL_BUTTON_LMASK) != 0; }

    void moveTo(const Point& point);
    void press(const Point& point);
    void release(const Point& point);

    const std::vector<SDL_Event>& events() const { return m_events; }

private:
    void addButton(Uint8 state);

    front::Mouse m_mouse = front::mouseNow();
    std::vector<SDL_Event> m_events;
};

// Each returns false, with a line in `error`, when the point is not on the application's surface or
// the finger is not in the right state.
bool canMove(const Point& point, std::string* error);
bool canPress(const Finger& finger, const Point& point, std::string* error);
bool canRelease(const Finger& finger, const Point& point, std::string* error);

}  // namespace input
