// The device's clock. SDL_Delay and SDL_GetTicks run on it.
#ifndef TAV_SIMULATOR_DEVICE_CLOCK_H
#define TAV_SIMULATOR_DEVICE_CLOCK_H

#include <cstdint>

namespace tavsim {

// A moment on the device's clock, or a stretch of time.
using Milliseconds = std::int64_t;

void startClock(bool virtualTime);

bool isTimeVirtual();

// False on every thread but the one that started the clock.
bool isOnDeviceThread();

// Milliseconds since the start.
Milliseconds now();

// The moment that comes so much after another; a negative stretch counts as none. Stays at the last
// moment that there is.
Milliseconds after(Milliseconds moment, Milliseconds stretch);

// Virtual time only: moves the clock on, never back.
void setTime(Milliseconds moment);

}  // namespace tavsim

#endif
