// Which events come from outside: from the window, or a signal that asks to end.
#ifndef TAV_SIMULATOR_INPUT_ORIGIN_H
#define TAV_SIMULATOR_INPUT_ORIGIN_H

#include "SDL.h"

namespace tavsim {

// Until this is asked for, nothing is noted, since it takes time.
void trackOrigins(bool isWanted);
bool areOriginsTracked();

// Can be called on any thread. The device or the application puts this event into the queue itself.
void noteOwnEvent(const SDL_Event& event);

// The application takes this event. True when nobody has noted it.
bool isFromOutside(const SDL_Event& event);

}  // namespace tavsim

#endif
