// The event pump: it delivers while the application polls, waits for or pumps SDL events.
#pragma once

#include "platform/visibility.h"
#include "simulator/time/clock.h"

namespace tavsim {

// For a device that starts, whose clock begins at 0.
void startPump();

// Serves the control socket and makes the deliveries that are due.
TAV_PLATFORM_API void pumpNow();

// While the application waits, for so long at most: sends to the clients of the control socket and
// to the page what they take. True when it waits for events, and the page has something.
TAV_PLATFORM_API bool sendWhileWaiting(Milliseconds longest, Wait wait);

// In virtual time: moves the clock from one delivery to the next, and finally to `time`.
void pumpUntil(Milliseconds time);

}  // namespace tavsim
