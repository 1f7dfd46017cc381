// Interposes SDL's functions for the state of the mouse, so that they know the input that was sent
// to the application. The keyboard's state can be changed in SDL itself.
#pragma once

#include "SDL.h"

namespace front {

struct Mouse {
    int x = 0;
    int y = 0;
    Uint8 buttons = 0;  // a bit for each, as of SDL_BUTTON()

    bool operator==(const Mouse&) const = default;
};

// The state that was sent last, until the real mouse moves. May be called on any thread.
Mouse mouseNow();

// Updates what SDL_GetMouseState() and SDL_GetRelativeMouseState() return.
void followMotion(const SDL_MouseMotionEvent& event);
void followButton(const SDL_MouseButtonEvent& event);

// Forgets the state that was sent.
void forgetMouse();

}  // namespace front
