// The device's clock, and the thread that it belongs to.
#ifndef TAV_SIMULATOR_TIME_CLOCK_H
#define TAV_SIMULATOR_TIME_CLOCK_H

#include <cstdint>

namespace tavsim {

// A moment on the device's clock, or a stretch of time.
using Milliseconds = std::int64_t;

// Real time is the machine's. Virtual time moves when the application waits, and paced time like
// that, but not before the machine's: so it can be lived through, and is the same once more in
// virtual time.
enum class Pace { Real, Virtual, Paced };

// Starts over at 0. The calling thread becomes the application's. When the simulator is loaded, the
// clock starts by itself, as TAVSIM_VIRTUAL_TIME and TAVSIM_RECORD ask.
void startClock(Pace pace);

// What follows can be called on any thread.

bool isTimeVirtual();  // or paced
bool isTimePaced();

// The device lives on the application's thread: there alone it delivers, and that alone moves
// virtual time.
bool isOnApplicationThread();

// Milliseconds since the start.
Milliseconds now();

// Real milliseconds, late by up to kLateness. Costs a few nanoseconds, where a look at the exact
// time can take microseconds on some machines.
Milliseconds realTimeAtLeast();
inline constexpr Milliseconds kLateness = 10;

// False only if the moment has surely not come yet; as cheap, for moments that are not near.
bool mayHaveCome(Milliseconds moment);

// The moment that comes so much after another; a negative stretch counts as none. Stays at the last
// moment that there is.
Milliseconds after(Milliseconds moment, Milliseconds stretch);

// Paced time: how far the machine's time is ahead.
Milliseconds lag();

// Virtual time only: moves the clock on, never back. On the application's thread.
void setTime(Milliseconds moment);

}  // namespace tavsim

#endif
