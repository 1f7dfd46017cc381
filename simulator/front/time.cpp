// SDL's time runs on the device's clock.
#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/device/clock.h"

extern "C" {

TAV_PLATFORM_API void SDL_Delay(Uint32 milliseconds) {
    if (tavsim::isTimeVirtual() && tavsim::isOnDeviceThread()) {
        tavsim::setTime(tavsim::after(tavsim::now(), milliseconds));
        return;
    }
    static const auto real = front::nextFunction<void(Uint32)>("SDL_Delay");
    real(milliseconds);
}

TAV_PLATFORM_API Uint32 SDL_GetTicks(void) {
    if (tavsim::isTimeVirtual()) {
        return static_cast<Uint32>(tavsim::now());
    }
    static const auto real = front::nextFunction<Uint32()>("SDL_GetTicks");
    return real();
}
}
