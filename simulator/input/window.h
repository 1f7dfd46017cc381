// The application's window: in front of its user, or put away.
#ifndef TAV_SIMULATOR_INPUT_WINDOW_H
#define TAV_SIMULATOR_INPUT_WINDOW_H

#include <string>

#include "SDL.h"

namespace tavsim {

// False, with a line in `error` and nothing done, when the application's event queue has not the
// room.
bool minimizeWindow(std::string* error);
bool restoreWindow(std::string* error);
bool askToQuit(std::string* error);

void followWindow(const SDL_ActiveEvent& event);

// What SDL_GetAppState() tells, from what SDL's own does. Can be called on any thread.
Uint8 appState(Uint8 real);

void forgetWindow();

}  // namespace tavsim

#endif
