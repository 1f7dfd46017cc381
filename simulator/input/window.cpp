#include "simulator/input/window.h"

#include <atomic>
#include <optional>
#include <vector>

#include "front/mouse.h"
#include "front/next.h"
#include "input/events.h"
#include "input/keyboard.h"
#include "simulator/device/state.h"
#include "simulator/input/origin.h"
#include "simulator/input/touch.h"

namespace tavsim {
namespace {

constexpr Uint8 kInFront = SDL_APPACTIVE | SDL_APPINPUTFOCUS;
constexpr size_t kRoomToLook = 64;  // in SDL's queue

std::atomic<bool> g_isMinimized = false;

// As SDL does when a window loses the keyboard focus.
void releaseKeys(input::KeyStrokes* strokes) {
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

// The state is set first, because the application's event filter may ask for it.
bool sendWindow(bool isMinimized, std::vector<SDL_Event> events, std::string* error) {
    events.push_back(activeEvent(!isMinimized));
    const bool was = g_isMinimized.exchange(isMinimized);
    if (!input::sendEvents(events, noteOwnEvent, error)) {
        g_isMinimized = was;
        return false;
    }
    setState("window", isMinimized ? "minimized" : "shown");
    return true;
}

}  // namespace

bool minimizeWindow(std::string* error) {
    input::KeyStrokes strokes;
    releaseKeys(&strokes);
    return sendWindow(true, strokes.events(), error);
}

bool restoreWindow(std::string* error) {
    return sendWindow(false, {}, error);
}

bool askToQuit(std::string* error) {
    SDL_Event event{};
    event.type = SDL_QUIT;
    return input::sendEvents({event}, noteOwnEvent, error);
}

// SDL drops what its full queue does not hold, so it may not look when much is waiting.
bool isQuitWaiting() {
    static const auto pumpEvents = TAV_FRONT_NEXT(SDL_PumpEvents);
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    const std::optional<size_t> room = input::queueRoom();
    if (!room || *room > kRoomToLook) {
        pumpEvents();
    }
    SDL_Event quit;
    return peepEvents(&quit, 1, SDL_PEEKEVENT, SDL_QUITMASK) > 0;
}

Uint8 appState(Uint8 real) {
    return g_isMinimized ? static_cast<Uint8>(real & ~kInFront) : real;
}

void stopInput() {
    stopDrag();
    front::forgetMouse();
    g_isMinimized = false;
}

}  // namespace tavsim
