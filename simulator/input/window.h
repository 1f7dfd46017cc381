// The application's window, shown or minimized, and the request to quit.
#pragma once

#include <string>

#include "SDL.h"

namespace tavsim {

// Each returns false, with a line in `error` and nothing done, when the application's event queue
// has not enough room.
bool minimizeWindow(std::string* error);
bool restoreWindow(std::string* error);
bool askToQuit(std::string* error);

// Whether SDL's request to quit waits for the application. Lets SDL look for it.
bool isQuitWaiting();

// The result of SDL_GetAppState(), given that of SDL's own. May be called on any thread.
Uint8 appState(Uint8 real);

// Resets the state of mouse and window, and ends a drag.
void stopInput();

}  // namespace tavsim
