#include "simulator/device/queue.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "simulator/device/clock.h"

namespace tavsim {
namespace {

struct Delivery {
    long due;
    unsigned long order;
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

unsigned long g_nextOrder = 0;

Delivery takeFirst() {
    std::pop_heap(queue().begin(), queue().end(), isLater);
    Delivery first = std::move(queue().back());
    queue().pop_back();
    return first;
}

}  // namespace

void schedule(long due, std::function<void()> deliver) {
    queue().push_back({due, g_nextOrder++, std::move(deliver)});
    std::push_heap(queue().begin(), queue().end(), isLater);
}

void deliverDue() {
    const long time = now();
    const unsigned long newcomers = g_nextOrder;
    while (!queue().empty()) {
        const Delivery& first = queue().front();
        const bool isDue = first.due < time || (first.due == time && first.order < newcomers);
        if (!isDue) {
            return;
        }
        takeFirst().deliver();
    }
}

std::optional<long> nextDue() {
    return queue().empty() ? std::nullopt : std::optional(queue().front().due);
}

void clearQueue() {
    queue().clear();
}

}  // namespace tavsim
