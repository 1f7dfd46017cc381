#include "simulator/time/queue.h"

#include <map>
#include <utility>

namespace tavsim {
namespace {

struct Delivery {
    const char* what;
    std::function<void()> deliver;
};

// Ordered by the time when it falls due, then by the order of queueing.
using Queue = std::map<std::pair<Milliseconds, std::uint64_t>, Delivery>;

// Never destroyed, because the device ends after static objects are destroyed, and empties it then.
Queue& queue() {
    static Queue& instance = *new Queue;
    return instance;
}

// Those that go first are counted from 0.
std::uint64_t g_nextOrder = std::uint64_t{1} << 63;
std::uint64_t g_nextFirst = 0;

std::uint64_t g_made = 0;

void deliverBefore(const std::pair<Milliseconds, std::uint64_t>& end) {
    while (!queue().empty() && queue().begin()->first < end) {
        ++g_made;
        queue().extract(queue().begin()).mapped().deliver();
    }
}

}  // namespace

void schedule(Milliseconds due, const char* what, std::function<void()> deliver) {
    // Most fall due after all others, so the search from the end is short.
    queue().emplace_hint(queue().end(), std::pair(due, g_nextOrder++),
                         Delivery{what, std::move(deliver)});
}

void scheduleFirst(Milliseconds due, const char* what, std::function<void()> deliver) {
    queue().emplace(std::pair(due, g_nextFirst++), Delivery{what, std::move(deliver)});
}

void deliverDue(void (*serve)()) {
    if (queue().empty() || !mayHaveCome(queue().begin()->first.first)) {
        serve();
        return;
    }
    const Milliseconds time = now();
    const std::pair beforeNewcomers(time, g_nextOrder);
    deliverBefore({time, 0});
    serve();
    deliverBefore(beforeNewcomers);
}

std::optional<Milliseconds> nextDue() {
    return queue().empty() ? std::nullopt : std::optional(queue().begin()->first.first);
}

std::uint64_t deliveriesMade() {
    return g_made;
}

std::vector<Due> nextInQueue(size_t most) {
    std::vector<Due> next;
    for (auto at = queue().begin(); at != queue().end() && next.size() < most; ++at) {
        next.push_back({at->first.first, at->second.what});
    }
    return next;
}

void clearQueue() {
    queue().clear();
}

}  // namespace tavsim
