// SDL's event functions, in front of SDL: while the application handles events, the implementation
// of platform/ has its turn.
#ifndef TAV_FRONT_EVENTS_H
#define TAV_FRONT_EVENTS_H

#include <atomic>

union SDL_Event;

namespace front {

// What follows is defined by the implementation, and is called for SDL 1.2 only.

// False as long as it takes part in nothing, so that a program that does not use the library pays
// nothing either. Its first value is the implementation's to choose.
extern std::atomic<bool> g_isAwake;

// From now on, and for good, the implementation may take part.
inline void wake() {
    g_isAwake = true;
}

// Whether it takes part on the calling thread. Asked with every poll of one that is awake, so it
// must cost next to nothing.
bool takesPart();

// Delivers what is due.
void deliver();

// The application, or the library while it waits for a reply, takes this event off SDL's queue.
void taken(const SDL_Event& event);

// The application waits, and there is no event: returns when a delivery may be due, or after a few
// milliseconds, as an event may come from elsewhere.
void waitForNext();

}  // namespace front

#endif
