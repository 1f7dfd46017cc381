// The queue of deliveries to the application.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "simulator/time/clock.h"

namespace tavsim {

// Queues a delivery; `what` is a lasting text that tells people what it is. Deliveries run in the
// order in which they fall due, those due at the same time in the order in which they were queued.
void schedule(Milliseconds due, const char* what, std::function<void()> deliver);

// The same for a future moment, before all other deliveries of that moment.
void scheduleFirst(Milliseconds due, const char* what, std::function<void()> deliver);

// Runs the deliveries that are due, on the caller's thread. A delivery is taken off the queue
// before it runs, so it may call this function itself. Deliveries that are queued for now meanwhile
// wait for the next call. Otherwise replies that cause calls that are answered at once would never
// let the application continue.
//
// `serve` runs at the point of a delivery that was queued with scheduleFirst() for now.
void deliverDue(void (*serve)());

// When the next delivery falls due, if there is one.
std::optional<Milliseconds> nextDue();

// So many deliveries have been made.
std::uint64_t deliveriesMade();

struct Due {
    Milliseconds at;
    const char* what;
};

// The deliveries that fall due next, at most so many.
std::vector<Due> nextInQueue(size_t most);

void clearQueue();

}  // namespace tavsim
