#include "simulator/time/queue.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavsim {
namespace {

struct Delivery {
    Milliseconds due;
    std::uint64_t order;
    std::function<void()> deliver;
};

bool isLater(const Delivery& left, const Delivery& right) {
    return std::pair(left.due, left.order) > std::pair(right.due, right.order);
}

// A heap, the next one in front. Never destroyed: the device ends after static objects do, and
// empties it then.
std::vector<Delivery>& queue() {
    static auto& instance = *new std::vector<Delivery>;
    return instance;
}

std::uint64_t g_nextOrder = 0;

Delivery takeFirst() {
    std::pop_heap(queue().begin(), queue().end(), isLater);
    Delivery first = std::move(queue().back());
    queue().pop_back();
    return first;
}

}  // namespace

void schedule(Milliseconds due, std::function<void()> deliver) {
    queue().push_back({due, g_nextOrder++, std::move(deliver)});
    std::push_heap(queue().begin(), queue().end(), isLater);
}

void deliverDue() {
    const Milliseconds time = now();
    const std::uint64_t newcomers = g_nextOrder;
    while (!queue().empty()) {
        const Delivery& first = queue().front();
        const bool isDue = first.due < time || (first.due == time && first.order < newcomers);
        if (!isDue) {
            return;
        }
        takeFirst().deliver();
    }
}

std::optional<Milliseconds> nextDue() {
    return queue().empty() ? std::nullopt : std::optional(queue().front().due);
}

void clearQueue() {
    queue().clear();
}

}  // namespace tavsim
