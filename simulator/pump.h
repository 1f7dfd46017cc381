// What the device delivers to the application, and when.
#ifndef TAV_SIMULATOR_PUMP_H
#define TAV_SIMULATOR_PUMP_H

#include <functional>

namespace sim {

// Queues a delivery. Deliveries run in the order in which they fall due, those due at the same
// time in the order in which they were queued.
void schedule(long due, std::function<void()> deliver);

// Runs what is due, on the caller's thread. A delivery may itself pump: it is off the queue before
// it runs. What is queued for now while the pump runs waits for the next pump, so that replies that
// cause calls that cause replies leave the application room in between.
void pumpNow();

// Virtual time: moves the clock from one due delivery to the next and at last to `time`.
void pumpUntil(long time);

void clearQueue();

// Says once on standard error that nothing will ever be delivered, when that is so: the
// application's SDL functions are not the simulator's.
void warnIfNotInFront();

}  // namespace sim

#endif
