// The mouse as which SDL shows the touch screen, and how it stands after what was sent.
#ifndef TAV_SIMULATOR_INPUT_MOUSE_H
#define TAV_SIMULATOR_INPUT_MOUSE_H

#include "SDL.h"

namespace tavsim {

struct Mouse {
    int x = 0;
    int y = 0;
    Uint8 buttons = 0;  // a bit for each, as of SDL_BUTTON()

    bool operator==(const Mouse&) const = default;
};

// These two can be called on any thread.

// As it was sent last, until the real one moves.
Mouse mouseNow();

// How far it has moved since the last time that this was asked, in place of its position.
Mouse mouseMovement();

void followMotion(const SDL_MouseMotionEvent& event);
void followButton(const SDL_MouseButtonEvent& event);

void forgetMouse();

}  // namespace tavsim

#endif
