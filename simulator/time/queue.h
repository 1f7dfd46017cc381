// What the device delivers to the application, and when.
#ifndef TAV_SIMULATOR_DEVICE_QUEUE_H
#define TAV_SIMULATOR_DEVICE_QUEUE_H

#include <functional>
#include <optional>

#include "simulator/time/clock.h"

namespace tavsim {

// Queues a delivery. Deliveries run in the order in which they fall due, those due at the same
// time in the order in which they were queued.
void schedule(Milliseconds due, std::function<void()> deliver);

// The same for a moment that is still to come, and in front of all else that falls due then.
void scheduleFirst(Milliseconds due, std::function<void()> deliver);

// Runs what is due, on the caller's thread. A delivery may itself come here: it is off the queue
// before it runs. What is queued for now meanwhile waits for the next time, so that replies that
// cause calls that cause replies leave the application room in between.
//
// `serve` has the turn of a delivery that was queued with scheduleFirst() for now.
void deliverDue(void (*serve)());

// When the next delivery falls due, if there is one.
std::optional<Milliseconds> nextDue();

void clearQueue();

}  // namespace tavsim

#endif
