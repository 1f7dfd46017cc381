// The application's window: shown or minimized.
#pragma once

#include <string>

#include "SDL.h"

namespace tavsim {

// False, with a line in `error` and nothing done, when the application's event queue has not enough
// room.
bool minimizeWindow(std::string* error);
bool restoreWindow(std::string* error);
bool askToQuit(std::string* error);

void followWindow(const SDL_ActiveEvent& event);

// The result of SDL_GetAppState(), given that of SDL's own. May be called on any thread.
Uint8 appState(Uint8 real);

void forgetWindow();

}  // namespace tavsim
