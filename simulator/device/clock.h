// The device's clock. SDL_Delay and SDL_GetTicks run on it.
#ifndef TAV_SIMULATOR_DEVICE_CLOCK_H
#define TAV_SIMULATOR_DEVICE_CLOCK_H

namespace tavsim {

void startClock(bool virtualTime);

bool isTimeVirtual();

// False on every thread but the one that started the clock.
bool isOnDeviceThread();

// Milliseconds since the start.
long now();

// Virtual time only: moves the clock on, never back.
void setTime(long milliseconds);

}  // namespace tavsim

#endif
