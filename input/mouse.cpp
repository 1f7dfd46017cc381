#include "input/mouse.h"

#include <mutex>
#include <optional>
#include <utility>

#include "front/mouse.h"
#include "front/next.h"

namespace input {
namespace {

using front::Mouse;

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
    sent().mouse = mouse;
    sent().real = realMouse();
}

}  // namespace

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

}  // namespace input

front::Mouse front::mouseNow() {
    const std::lock_guard lock(input::sent().mutex);
    return input::presentMouse();
}

front::Mouse front::mouseMovement() {
    static const auto relativeState = TAV_FRONT_NEXT(SDL_GetRelativeMouseState);
    const std::lock_guard lock(input::sent().mutex);
    Mouse movement;
    relativeState(&movement.x, &movement.y);
    movement.x += std::exchange(input::sent().movedX, 0);
    movement.y += std::exchange(input::sent().movedY, 0);
    movement.buttons = input::presentMouse().buttons;
    return movement;
}
