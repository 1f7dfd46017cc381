// The state of the mouse, which stands for the touch screen, after the events that were sent.
#pragma once

#include "SDL.h"

namespace tavsim {

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

void forgetMouse();

}  // namespace tavsim
