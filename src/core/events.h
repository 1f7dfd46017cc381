// SDL user events that announce state of the library.
#pragma once

#include "SDL.h"

namespace tav {

// The event points at live state, which must outlive every event. When SDL's queue is full, or
// there is none, the event is lost; the state can still be queried.
inline void pushUserEvent(int code, void* state) {
    SDL_Event event{};
    event.user.type = SDL_USEREVENT;
    event.user.code = code;
    event.user.data1 = state;
    event.user.data2 = nullptr;
    SDL_PushEvent(&event);
}

}  // namespace tav
