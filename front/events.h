// SDL's event functions, in front of SDL: while the application handles events, the implementation
// of platform/ has its turn.
#ifndef TAV_FRONT_EVENTS_H
#define TAV_FRONT_EVENTS_H

union SDL_Event;

namespace front {

// What follows is defined by the implementation, and is called for SDL 1.2 only.

// Whether it takes part on the calling thread. Asked with every poll, so it must cost next to
// nothing.
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
