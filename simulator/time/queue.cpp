#include "simulator/time/queue.h"

#include <cstdint>
#include <map>
#include <utility>

namespace tavsim {
namespace {

// The next one in front: by when it falls due, then by when it was queued.
using Queue = std::map<std::pair<Milliseconds, std::uint64_t>, std::function<void()>>;

// Never destroyed: the device ends after static objects do, and empties it then.
Queue& queue() {
    static Queue& instance = *new Queue;
    return instance;
}

// Those that go first are counted from 0.
std::uint64_t g_nextOrder = std::uint64_t{1} << 63;
std::uint64_t g_nextFirst = 0;

}  // namespace

void schedule(Milliseconds due, std::function<void()> deliver) {
    // Most fall due behind all others, and find their place at once.
    queue().emplace_hint(queue().end(), std::pair(due, g_nextOrder++), std::move(deliver));
}

void scheduleFirst(Milliseconds due, std::function<void()> deliver) {
    queue().emplace(std::pair(due, g_nextFirst++), std::move(deliver));
}

void deliverDue() {
    if (queue().empty() || !mayHaveCome(queue().begin()->first.first)) {
        return;
    }
    const std::pair beforeNewcomers(now(), g_nextOrder);
    while (!queue().empty() && queue().begin()->first < beforeNewcomers) {
        queue().extract(queue().begin()).mapped()();
    }
}

std::optional<Milliseconds> nextDue() {
    return queue().empty() ? std::nullopt : std::optional(queue().begin()->first.first);
}

void clearQueue() {
    queue().clear();
}

}  // namespace tavsim
