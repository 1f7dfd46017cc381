#include "simulator/input/window.h"

#include <atomic>

#include "front/next.h"
#include "simulator/device/state.h"
#include "simulator/input/events.h"
#include "simulator/input/keyboard.h"

namespace tavsim {
namespace {

constexpr Uint8 kInFront = SDL_APPACTIVE | SDL_APPINPUTFOCUS;

std::atomic<bool> g_isMinimized = false;

// As SDL does when a window loses the keyboard focus.
void releaseKeys(KeyStrokes* strokes) {
    static const auto keyState = TAV_FRONT_NEXT(SDL_GetKeyState);
    int count = 0;
    const Uint8* keys = keyState(&count);
    for (int key = 0; key < count; ++key) {
        if (keys[key] == SDL_PRESSED) {
            strokes->release(static_cast<SDLKey>(key));
        }
    }
}

SDL_Event activeEvent(bool gain) {
    SDL_Event event{};
    event.active.type = SDL_ACTIVEEVENT;
    event.active.gain = gain ? 1 : 0;
    event.active.state = kInFront;
    return event;
}

}  // namespace

bool minimizeWindow(std::string* error) {
    KeyStrokes strokes;
    releaseKeys(&strokes);
    std::vector<SDL_Event> events = strokes.events();
    events.push_back(activeEvent(false));
    if (!sendEvents(events, error)) {
        return false;
    }
    setState("window", "minimized");
    return true;
}

bool restoreWindow(std::string* error) {
    if (!sendEvents({activeEvent(true)}, error)) {
        return false;
    }
    setState("window", "shown");
    return true;
}

bool askToQuit(std::string* error) {
    SDL_Event event{};
    event.type = SDL_QUIT;
    return sendEvents({event}, error);
}

void followWindow(const SDL_ActiveEvent& event) {
    g_isMinimized = event.gain == 0;
}

Uint8 appState(Uint8 real) {
    return g_isMinimized ? static_cast<Uint8>(real & ~kInFront) : real;
}

void forgetWindow() {
    g_isMinimized = false;
}

}  // namespace tavsim
