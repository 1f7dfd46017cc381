// SDL user events that announce state of the library.
#ifndef TAV_CORE_EVENTS_H
#define TAV_CORE_EVENTS_H

#include "SDL.h"

namespace tav {

// The event points at live state, which must outlive every event. An event that SDL has no room
// for, or no queue, is lost: the state itself can still be asked for.
inline void pushUserEvent(int code, void* state) {
    SDL_Event event{};
    event.user.type = SDL_USEREVENT;
    event.user.code = code;
    event.user.data1 = state;
    event.user.data2 = nullptr;
    SDL_PushEvent(&event);
}

}  // namespace tav

#endif
