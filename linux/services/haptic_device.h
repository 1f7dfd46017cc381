// The vibration motor as an input device with force feedback.
#ifndef TAV_LINUX_SERVICES_HAPTIC_DEVICE_H
#define TAV_LINUX_SERVICES_HAPTIC_DEVICE_H

#include <cstdint>

namespace tavlinux {

// Starts the motor and returns; milliseconds. False when there is none that the user may use.
bool runMotor(int64_t period, int64_t duration);

}  // namespace tavlinux

#endif
