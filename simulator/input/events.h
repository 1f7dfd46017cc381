// Sends input to the application through SDL's event queue; its window, shown or minimized.
#pragma once

#include <string>
#include <vector>

#include "SDL.h"

namespace tavsim {

// Whether SDL has an event queue: its video is initialized.
bool hasEventQueue();
inline constexpr char kNoEventQueue[] = "the application has no event queue";

// Sends all of the events as if the user had caused them. SDL's functions for the state of keys,
// mouse and window follow, and the application's event filter applies. False, with a line in
// `error` and nothing done, when the queue has not enough room.
bool sendEvents(const std::vector<SDL_Event>& events, std::string* error);

// Whether SDL's request to quit waits for the application. Lets SDL look for it.
bool isQuitWaiting();

// Resets the state of keys, mouse and window.
void stopInput();

// False, with a line in `error` and nothing done, when the application's event queue has not enough
// room.
bool minimizeWindow(std::string* error);
bool restoreWindow(std::string* error);
bool askToQuit(std::string* error);

// The result of SDL_GetAppState(), given that of SDL's own. May be called on any thread.
Uint8 appState(Uint8 real);

}  // namespace tavsim
