#include "input/touch.h"

#include "front/next.h"

namespace input {

void Finger::moveTo(const Point& point) {
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

void Finger::press(const Point& point) {
    moveTo(point);
    addButton(SDL_PRESSED);
    m_mouse.buttons |= SDL_BUTTON_LMASK;
}

void Finger::release(const Point& point) {
    moveTo(point);
    addButton(SDL_RELEASED);
    m_mouse.buttons &= static_cast<Uint8>(~SDL_BUTTON_LMASK);
}

void Finger::addButton(Uint8 state) {
    SDL_Event event{};
    event.button.type = state == SDL_PRESSED ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
    event.button.button = SDL_BUTTON_LEFT;
    event.button.state = state;
    event.button.x = static_cast<Uint16>(m_mouse.x);
    event.button.y = static_cast<Uint16>(m_mouse.y);
    m_events.push_back(event);
}

bool canMove(const Point& point, std::string* error) {
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

bool canPress(const Finger& finger, const Point& point, std::string* error) {
    if (finger.isDown()) {
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

}  // namespace input
