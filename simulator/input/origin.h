// Tells events from outside, of the window or a signal, from those that the program pushes.
#pragma once

#include "SDL.h"

namespace tavsim {

// Starts to note events; off by default, because it takes time.
void trackOrigins(bool isWanted);
bool areOriginsTracked();

// The device or the application pushes this event. May be called on any thread.
void noteOwnEvent(const SDL_Event& event);

// The application takes this event off the queue. True when it comes from outside: nobody noted it.
bool isFromOutside(const SDL_Event& event);

}  // namespace tavsim
