#include "simulator/input/touch.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "SDL.h"
#include "front/next.h"
#include "simulator/input/events.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

constexpr Milliseconds kDragStep = 20;
constexpr int kMovesAtOnce = 10;  // of a drag without a duration

struct Drag {
    Point from;
    Point to;
    Milliseconds begin;
    Milliseconds time;
};

std::optional<Drag> g_drag;

// Builds the events of a finger.
class Finger {
public:
    bool isDown() const { return (m_mouse.buttons & SDL_BUTTON_LMASK) != 0; }

    void moveTo(const Point& point) {
        if (point.x == m_mouse.x && point.y == m_mouse.y) {
            return;
        }
        SDL_Event event{};
        event.motion.type = SDL_MOUSEMOTION;
        event.motion.state = m_mouse.buttons;
        event.motion.x = static_cast<Uint16>(point.x);
        event.motion.y = static_cast<Uint16>(point.y);
        event.motion.xrel = static_cast<Sint16>(point.x - m_mouse.x);
        event.motion.yrel = static_cast<Sint16>(point.y - m_mouse.y);
        m_events.push_back(event);
        m_mouse.x = point.x;
        m_mouse.y = point.y;
    }

    void press(const Point& point) {
        moveTo(point);
        addButton(SDL_PRESSED);
        m_mouse.buttons |= SDL_BUTTON_LMASK;
    }

    void release(const Point& point) {
        moveTo(point);
        addButton(SDL_RELEASED);
        m_mouse.buttons &= static_cast<Uint8>(~SDL_BUTTON_LMASK);
    }

    bool send(std::string* error) const { return sendEvents(m_events, error); }

private:
    void addButton(Uint8 state) {
        SDL_Event event{};
        event.button.type = state == SDL_PRESSED ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
        event.button.button = SDL_BUTTON_LEFT;
        event.button.state = state;
        event.button.x = static_cast<Uint16>(m_mouse.x);
        event.button.y = static_cast<Uint16>(m_mouse.y);
        m_events.push_back(event);
    }

    Mouse m_mouse = mouseNow();
    std::vector<SDL_Event> m_events;
};

bool isOnSurface(const Point& point, std::string* error) {
    static const auto videoSurface = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    const SDL_Surface* surface = videoSurface();
    if (surface == nullptr) {
        *error = "the application has no surface";
        return false;
    }
    if (point.x < 0 || point.y < 0 || point.x >= surface->w || point.y >= surface->h) {
        *error = std::to_string(point.x) + " " + std::to_string(point.y) +
                 " is not on the application's surface, which is " + std::to_string(surface->w) +
                 " x " + std::to_string(surface->h);
        return false;
    }
    return true;
}

bool canMove(const Point& point, std::string* error) {
    if (g_drag) {
        *error = "a drag is under way";
        return false;
    }
    return isOnSurface(point, error);
}

bool canPress(const Finger& finger, const Point& point, std::string* error) {
    if (finger.isDown() && !g_drag) {
        *error = "the screen is touched already";
        return false;
    }
    return canMove(point, error);
}

bool canRelease(const Finger& finger, const Point& point, std::string* error) {
    if (!finger.isDown()) {
        *error = "nothing touches the screen";
        return false;
    }
    return canMove(point, error);
}

Point pointOf(const Drag& drag, double share) {
    const auto between = [share](int from, int to) {
        return from + static_cast<int>(share * (to - from));
    };
    return {between(drag.from.x, drag.to.x), between(drag.from.y, drag.to.y)};
}

void dragOn();

void scheduleDrag() {
    const Milliseconds end = after(g_drag->begin, g_drag->time);
    schedule(now() < end ? std::min(after(now(), kDragStep), end) : after(now(), kDragStep),
             "input", dragOn);
}

// If the queue has no room for a step, it is done later.
void dragOn() {
    const Drag drag = *g_drag;
    const double share =
        std::min(1.0, static_cast<double>(now() - drag.begin) / static_cast<double>(drag.time));
    Finger finger;
    if (share < 1.0) {
        finger.moveTo(pointOf(drag, share));
    } else {
        finger.release(drag.to);
    }
    std::string error;
    const bool isSent = finger.send(&error);
    if ((isSent && share >= 1.0) || !hasEventQueue()) {
        g_drag.reset();
        return;
    }
    scheduleDrag();
}

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

bool touchDown(const Point& point, std::string* error) {
    Finger finger;
    if (!canPress(finger, point, error)) {
        return false;
    }
    finger.press(point);
    return finger.send(error);
}

bool touchMove(const Point& point, std::string* error) {
    if (!canMove(point, error)) {
        return false;
    }
    Finger finger;
    finger.moveTo(point);
    return finger.send(error);
}

bool touchUp(const Point& point, std::string* error) {
    Finger finger;
    if (!canRelease(finger, point, error)) {
        return false;
    }
    finger.release(point);
    return finger.send(error);
}

bool tapScreen(const Point& point, std::string* error) {
    Finger finger;
    if (!canPress(finger, point, error)) {
        return false;
    }
    finger.press(point);
    finger.release(point);
    return finger.send(error);
}

bool dragFinger(const Point& from, const Point& to, Milliseconds time, std::string* error) {
    Finger finger;
    if (!canPress(finger, from, error) || !isOnSurface(to, error)) {
        return false;
    }
    const Drag drag = {from, to, now(), time};
    finger.press(from);
    if (time == 0) {
        for (int move = 1; move < kMovesAtOnce; ++move) {
            finger.moveTo(pointOf(drag, static_cast<double>(move) / kMovesAtOnce));
        }
        finger.release(to);
    }
    if (!finger.send(error)) {
        return false;
    }
    if (time > 0) {
        g_drag = drag;
        scheduleDrag();
    }
    return true;
}

void stopTouch() {
    g_drag.reset();
    const std::lock_guard lock(sent().mutex);
    sent().mouse.reset();
    sent().movedX = 0;
    sent().movedY = 0;
}

Mouse mouseNow() {
    const std::lock_guard lock(sent().mutex);
    return presentMouse();
}

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

}  // namespace tavsim
