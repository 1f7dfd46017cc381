// Interposes SDL's event functions, so that the implementation of platform/ runs while the
// application handles events, and the function with which it shows what it has drawn with OpenGL.
#pragma once

#include <atomic>

union SDL_Event;

namespace front {

// Whether each frame is to be kept, because somebody is to see it. False until it is set, so that
// others pay nothing.
extern std::atomic<bool> g_areFramesWatched;

// The following is defined by the implementation. All but delay() and keepFrame() is used with SDL
// 1.2 only.

// False until the implementation has something to do, so that a program that does not use the
// library pays nothing. The implementation chooses the initial value.
extern std::atomic<bool> g_isAwake;

// Sets it for good.
inline void wake() {
    g_isAwake = true;
}

// Whether there is anything to do on the calling thread. Called with every poll once awake, so it
// must cost next to nothing.
bool takesPart();

// Makes the deliveries that are due.
void deliver();

// Called when the application, or the library while it waits for a reply, has looked for an event:
// with the one that it has taken off SDL's queue, or null when there was none.
void looked(const SDL_Event* event);

// Called while the application waits and there is no event. Returns when a delivery may be due, or
// after a few milliseconds, because SDL may have an event.
void waitForNext();

// Carries out SDL_Delay() on any thread, with or without SDL's own function.
void delay(unsigned milliseconds, void (*real)(unsigned milliseconds));

// Called by the thread that draws, before it shows a frame that is to be kept.
void keepFrame();

}  // namespace front
