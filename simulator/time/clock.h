// The device's clock, and the thread that it belongs to.
#pragma once

#include <cstdint>

namespace tavsim {

// A point in time on the device's clock, or a duration.
using Milliseconds = std::int64_t;

// Real time is the machine's. Virtual time moves only while the application waits. Paced time is
// virtual time that does not run ahead of real time, or of a multiple of it: a user can interact
// with it, and a later run in virtual time gives the same times.
enum class Pace { Real, Virtual, Paced };

// Restarts the clock at 0. The calling thread becomes the application's. When the simulator is
// loaded, the clock starts by itself, as TAVSIM_VIRTUAL_TIME and TAVSIM_RECORD say.
void startClock(Pace pace);

// The following may be called on any thread.

bool isTimeVirtual();  // or paced
bool isTimePaced();

// The device belongs to the application's thread. Only this thread delivers and moves virtual time.
bool isOnApplicationThread();

// Milliseconds since the start.
Milliseconds now();

// Real milliseconds, late by up to kLateness. Takes a few nanoseconds; reading the exact time can
// take microseconds on some machines.
Milliseconds realTimeAtLeast();
inline constexpr Milliseconds kLateness = 10;

// False only if the moment has surely not come yet. As cheap, if the moment is not near.
bool mayHaveCome(Milliseconds moment);

// The moment plus a duration; a negative duration counts as 0. Saturates at the largest value.
Milliseconds after(Milliseconds moment, Milliseconds stretch);

// What a wait in real time is for: to let time pass, or to handle events afterwards.
enum class Wait { ForTime, ForEvents };

// What is done on the application's thread while it waits in real time, for so long at most; null:
// nothing. True ends a wait for events early, because there is something to be handled.
void setMeanwhile(bool (*meanwhile)(Milliseconds longest, Wait wait));

// Does it, and returns how long the wait still is, which is 0 when it ends early.
Milliseconds useWait(Milliseconds longest, Wait wait = Wait::ForTime);

// Virtual time only: moves the clock on, never back. On the application's thread.
void setTime(Milliseconds moment);

// The following are for paced time, on the application's thread.

// Waits for events as long as `meanwhile` has something to do, at most until the moment. Returns up
// to which moment to let time pass: this one, or an earlier one when there are events.
Milliseconds waitInPace(Milliseconds until);

// How far the clock is behind, because the application was busy.
Milliseconds lag();

// So many times as fast as real time.
double paceFactor();
void setPaceFactor(double factor);

// The device's time that passes in so much real time.
Milliseconds inPace(Milliseconds real);

// It does not catch up with the real time that has passed.
void forgetLag();

}  // namespace tavsim
