#include "front/mouse.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

#include "front/next.h"
#include "platform/visibility.h"

namespace front {
namespace {

using MouseFunction = Uint32(int* x, int* y);

// False until input is sent, so that others pay nothing.
constinit std::atomic<bool> g_isMouseSent = false;

// The state that was sent, and the real mouse at that time. SDL's own state of the mouse cannot be
// set.
struct Sent {
    std::mutex mutex;
    std::optional<Mouse> mouse;
    Mouse real;
    int movedX = 0;
    int movedY = 0;
};

Sent& sent() {
    // Never destroyed, because threads that outlive static objects still read it.
    static Sent& instance = *new Sent;
    return instance;
}

Mouse realMouse() {
    static const auto mouseState = TAV_FRONT_NEXT(SDL_GetMouseState);
    Mouse mouse;
    mouse.buttons = mouseState(&mouse.x, &mouse.y);
    return mouse;
}

Mouse presentMouse() {
    const Mouse real = realMouse();
    if (real != sent().real) {
        sent().mouse.reset();
    }
    return sent().mouse.value_or(real);
}

void follow(const Mouse& mouse) {
    g_isMouseSent = true;
    sent().mouse = mouse;
    sent().real = realMouse();
}

// The motion since the last call, instead of the position.
Mouse mouseMovement() {
    static const auto relativeState = TAV_FRONT_NEXT(SDL_GetRelativeMouseState);
    const std::lock_guard lock(sent().mutex);
    Mouse movement;
    relativeState(&movement.x, &movement.y);
    movement.x += std::exchange(sent().movedX, 0);
    movement.y += std::exchange(sent().movedY, 0);
    movement.buttons = presentMouse().buttons;
    return movement;
}

bool isMouseFollowed() {
    return g_isMouseSent && isSdl12();
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

Mouse mouseNow() {
    const std::lock_guard lock(sent().mutex);
    return presentMouse();
}

void followMotion(const SDL_MouseMotionEvent& event) {
    const std::lock_guard lock(sent().mutex);
    sent().movedX += event.xrel;
    sent().movedY += event.yrel;
    follow({event.x, event.y, event.state});
}

void followButton(const SDL_MouseButtonEvent& event) {
    const std::lock_guard lock(sent().mutex);
    const auto bit = SDL_BUTTON(event.button);
    const int others = presentMouse().buttons & ~bit;
    follow(
        {event.x, event.y, static_cast<Uint8>(event.state == SDL_PRESSED ? others | bit : others)});
}

void forgetMouse() {
    const std::lock_guard lock(sent().mutex);
    sent().mouse.reset();
    sent().movedX = 0;
    sent().movedY = 0;
}

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
