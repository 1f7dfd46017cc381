#include "simulator/input/events.h"

#include <atomic>

#include "front/next.h"
#include "simulator/device/state.h"
#include "simulator/input/keyboard.h"
#include "simulator/input/origin.h"
#include "simulator/input/touch.h"

namespace tavsim {
namespace {

constexpr int kQueueHolds = 127;  // in SDL 1.2
constexpr Uint8 kInFront = SDL_APPACTIVE | SDL_APPINPUTFOCUS;

std::atomic<bool> g_isMinimized = false;

// Negative when there is no queue.
int queuedEvents() {
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    SDL_Event queued[kQueueHolds];
    return peepEvents(queued, kQueueHolds, SDL_PEEKEVENT, SDL_ALLEVENTS);
}

void followEvent(const SDL_Event& event) {
    switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        followKey(event.key);
        break;
    case SDL_MOUSEMOTION:
        followMotion(event.motion);
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        followButton(event.button);
        break;
    case SDL_ACTIVEEVENT:
        g_isMinimized = event.active.gain == 0;
        break;
    default:
        break;
    }
}

bool isWanted(const SDL_Event& event) {
    static const auto eventState = TAV_FRONT_NEXT(SDL_EventState);
    static const auto eventFilter = TAV_FRONT_NEXT(SDL_GetEventFilter);
    if (eventState(event.type, SDL_QUERY) == SDL_IGNORE) {
        return false;
    }
    const SDL_EventFilter filter = eventFilter();
    return filter == nullptr || filter(&event) != 0;
}

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

bool hasEventQueue() {
    return queuedEvents() >= 0;
}

// SDL drops what its full queue does not hold, so it may not look when much is waiting.
bool isQuitWaiting() {
    static const auto pumpEvents = TAV_FRONT_NEXT(SDL_PumpEvents);
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    if (queuedEvents() < kQueueHolds / 2) {
        pumpEvents();
    }
    SDL_Event quit;
    return peepEvents(&quit, 1, SDL_PEEKEVENT, SDL_QUITMASK) > 0;
}

bool sendEvents(const std::vector<SDL_Event>& events, std::string* error) {
    const int queued = queuedEvents();
    if (queued < 0) {
        *error = kNoEventQueue;
        return false;
    }
    const size_t room = static_cast<size_t>(kQueueHolds - queued);
    if (events.size() > room) {
        *error = "the application's event queue has room for " + std::to_string(room) +
                 " more events, and this takes " + std::to_string(events.size());
        return false;
    }
    static const auto pushEvent = TAV_FRONT_NEXT(SDL_PushEvent);
    for (SDL_Event event : events) {
        followEvent(event);
        if (isWanted(event)) {
            noteOwnEvent(event);
            pushEvent(&event);
        }
    }
    return true;
}

void stopInput() {
    stopTouch();
    g_isMinimized = false;
}

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

Uint8 appState(Uint8 real) {
    return g_isMinimized ? static_cast<Uint8>(real & ~kInFront) : real;
}

}  // namespace tavsim
