#include "input/events.h"

#include "front/mouse.h"
#include "front/next.h"
#include "input/keyboard.h"

namespace input {
namespace {

constexpr int kQueueHolds = 127;  // in SDL 1.2

void followEvent(const SDL_Event& event) {
    switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        followKey(event.key);
        break;
    case SDL_MOUSEMOTION:
        front::followMotion(event.motion);
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        front::followButton(event.button);
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

std::optional<size_t> queueRoom() {
    static const auto peepEvents = TAV_FRONT_NEXT(SDL_PeepEvents);
    SDL_Event queued[kQueueHolds];
    const int count = peepEvents(queued, kQueueHolds, SDL_PEEKEVENT, SDL_ALLEVENTS);
    return count >= 0 ? std::optional(static_cast<size_t>(kQueueHolds - count)) : std::nullopt;
}

bool sendEvents(const std::vector<SDL_Event>& events, EventObserver observer, std::string* error) {
    const std::optional<size_t> room = queueRoom();
    if (!room) {
        *error = "the application has no event queue";
        return false;
    }
    if (events.size() > *room) {
        *error = "the application's event queue has room for " + std::to_string(*room) +
                 " more events, and this takes " + std::to_string(events.size());
        return false;
    }
    static const auto pushEvent = TAV_FRONT_NEXT(SDL_PushEvent);
    for (SDL_Event event : events) {
        followEvent(event);
        if (isWanted(event)) {
            observer(event);
            pushEvent(&event);
        }
    }
    return true;
}

void sendOrDrop(const std::vector<SDL_Event>& events) {
    static const auto pushEvent = TAV_FRONT_NEXT(SDL_PushEvent);
    if (!queueRoom()) {
        return;
    }
    for (SDL_Event event : events) {
        followEvent(event);
        const size_t keptFree = event.type == SDL_MOUSEMOTION ? kQueueHolds / 2 : 0;
        if (isWanted(event) && queueRoom() > keptFree) {
            pushEvent(&event);
        }
    }
}

}  // namespace input
