// Interposes SDL's functions for the state of the mouse, so that they know the input that was sent
// to the application. The keyboard's state can be changed in SDL itself.
#pragma once

#include <atomic>

#include "SDL.h"

namespace front {

struct Mouse {
    int x = 0;
    int y = 0;
    Uint8 buttons = 0;  // a bit for each, as of SDL_BUTTON()

    bool operator==(const Mouse&) const = default;
};

// False until input is sent, so that others pay nothing.
extern std::atomic<bool> g_isInputSent;

// The following is defined in input/, and used with SDL 1.2 only. It is called on any thread.

// The state that was sent last, until the real mouse moves.
Mouse mouseNow();

// The motion since the last call, instead of the position.
Mouse mouseMovement();

}  // namespace front
