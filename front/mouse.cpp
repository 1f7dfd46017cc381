#include "front/mouse.h"

#include "front/next.h"
#include "platform/visibility.h"

namespace front {

constinit std::atomic<bool> g_isInputSent = false;

namespace {

using MouseFunction = Uint32(int* x, int* y);

bool isMouseFollowed() {
    return g_isInputSent && isSdl12();
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
}  // namespace front

extern "C" {

// Later versions of SDL have functions of these names with wider types. Their calls pass through
// here.
TAV_PLATFORM_API Uint32 tavMouseState(int* x, int* y) __asm__("SDL_GetMouseState");
TAV_PLATFORM_API Uint32 tavMouseMovement(int* x, int* y) __asm__("SDL_GetRelativeMouseState");

Uint32 tavMouseState(int* x, int* y) {
    static const auto real = front::nextFunction<front::MouseFunction>("SDL_GetMouseState");
    return front::isMouseFollowed() ? front::tell(front::mouseNow(), x, y) : real(x, y);
}

Uint32 tavMouseMovement(int* x, int* y) {
    static const auto real = front::nextFunction<front::MouseFunction>("SDL_GetRelativeMouseState");
    return front::isMouseFollowed() ? front::tell(front::mouseMovement(), x, y) : real(x, y);
}
}
