#include "simulator/input/origin.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>

namespace tavsim {
namespace {

constexpr size_t kMostNoted = 128;  // the queue holds no more

std::atomic<bool> g_areTracked = false;

struct Own {
    std::mutex mutex;
    std::deque<SDL_Event> events;
};

Own& own() {
    // Never destroyed, because threads that outlive static objects still push events.
    static Own& instance = *new Own;
    return instance;
}

bool isSame(const SDL_Event& one, const SDL_Event& other) {
    if (one.type != other.type) {
        return false;
    }
    switch (one.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        return one.key.keysym.sym == other.key.keysym.sym;
    case SDL_MOUSEMOTION:
        return one.motion.x == other.motion.x && one.motion.y == other.motion.y;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        return one.button.button == other.button.button && one.button.x == other.button.x &&
               one.button.y == other.button.y;
    case SDL_ACTIVEEVENT:
        return one.active.gain == other.active.gain && one.active.state == other.active.state;
    default:
        return true;
    }
}

}  // namespace

void trackOrigins(bool isWanted) {
    g_areTracked = isWanted;
    const std::lock_guard lock(own().mutex);
    own().events.clear();
}

bool areOriginsTracked() {
    return g_areTracked;
}

void noteOwnEvent(const SDL_Event& event) {
    if (!g_areTracked || event.type >= SDL_USEREVENT) {
        return;  // only the application pushes user events
    }
    const std::lock_guard lock(own().mutex);
    own().events.push_back(event);
    if (own().events.size() > kMostNoted) {
        own().events.pop_front();
    }
}

bool isFromOutside(const SDL_Event& event) {
    const std::lock_guard lock(own().mutex);
    auto& events = own().events;
    const auto noted = std::find_if(events.begin(), events.end(),
                                    [&](const SDL_Event& each) { return isSame(each, event); });
    if (noted == events.end()) {
        return true;
    }
    events.erase(noted);
    return false;
}

}  // namespace tavsim
