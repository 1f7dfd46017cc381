// Interposes SDL's functions for the state of mouse and window, so that they know the input that
// was sent to the application, and SDL_PushEvent, because an event that the application sends to
// itself is not input. The keyboard's state can be changed in SDL itself.
#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/device/running.h"
#include "simulator/input/events.h"
#include "simulator/input/origin.h"
#include "simulator/input/touch.h"

namespace tavsim {
namespace {

using MouseFunction = Uint32(int* x, int* y);

bool isAsked() {
    return isStarted() && front::isSdl12();
}

Uint32 tell(const Mouse& mouse, int* x, int* y) {
    if (x != nullptr) {
        *x = mouse.x;
    }
    if (y != nullptr) {
        *y = mouse.y;
    }
    return mouse.buttons;
}

}  // namespace
}  // namespace tavsim

extern "C" {

// Later versions of SDL have functions of these names with wider types. Their calls pass through
// here.
TAV_PLATFORM_API Uint32 tavsimMouseState(int* x, int* y) __asm__("SDL_GetMouseState");
TAV_PLATFORM_API Uint32 tavsimMouseMovement(int* x, int* y) __asm__("SDL_GetRelativeMouseState");

Uint32 tavsimMouseState(int* x, int* y) {
    static const auto real = front::nextFunction<tavsim::MouseFunction>("SDL_GetMouseState");
    return tavsim::isAsked() ? tavsim::tell(tavsim::mouseNow(), x, y) : real(x, y);
}

Uint32 tavsimMouseMovement(int* x, int* y) {
    static const auto real =
        front::nextFunction<tavsim::MouseFunction>("SDL_GetRelativeMouseState");
    return tavsim::isAsked() ? tavsim::tell(tavsim::mouseMovement(), x, y) : real(x, y);
}

// SDL itself calls this for events of its window and of signals, and later versions with events of
// another layout.
TAV_PLATFORM_API int SDL_PushEvent(SDL_Event* event) {
    static const auto real = TAV_FRONT_NEXT(SDL_PushEvent);
    const bool isOwn = event != nullptr && tavsim::areOriginsTracked() && front::isSdl12() &&
                       front::objectOf(__builtin_return_address(0)) !=
                           front::objectOf(reinterpret_cast<const void*>(real));
    if (isOwn) {
        tavsim::noteOwnEvent(*event);
    }
    return real(event);
}

TAV_PLATFORM_API Uint8 SDL_GetAppState(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_GetAppState);
    return tavsim::isAsked() ? tavsim::appState(real()) : real();
}
}
