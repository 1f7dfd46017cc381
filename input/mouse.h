// The state of the mouse, which stands for the touch screen.
#pragma once

#include "SDL.h"

namespace input {

// Updates what SDL_GetMouseState() and SDL_GetRelativeMouseState() return.
void followMotion(const SDL_MouseMotionEvent& event);
void followButton(const SDL_MouseButtonEvent& event);

// Forgets the state that was sent.
void forgetMouse();

}  // namespace input
