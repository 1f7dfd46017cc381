// What the page's user does to the application's picture: keys and touches become SDL's events.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "SDL.h"
#include "input/touch.h"

namespace bridge {

// What cannot be, such as a touch beside the application's surface, is passed over.
class PageInput {
public:
    // False when the action is none of down, move and up.
    bool touch(std::string_view action, const input::Point& point);

    void key(bool isPressed, std::string_view name);
    void type(const std::string& text);

    // Releases what the page holds.
    void release();

private:
    void touchUp(const input::Point& point);

    bool m_isTouching = false;
    std::set<SDLKey> m_pressed;
};

}  // namespace bridge
