#include "simulator/input/events.h"

#include "front/next.h"
#include "simulator/input/keyboard.h"
#include "simulator/input/mouse.h"
#include "simulator/input/origin.h"
#include "simulator/input/touch.h"
#include "simulator/input/window.h"

namespace tavsim {
namespace {

constexpr int kQueueHolds = 127;  // in SDL 1.2

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
        followWindow(event.active);
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

}  // namespace

bool hasEventQueue() {
    return queuedEvents() >= 0;
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
    forgetMouse();
    forgetWindow();
}

}  // namespace tavsim
