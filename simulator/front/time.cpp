// Interposes SDL's time and timers: in virtual time they use the device's clock.
#include "SDL.h"
#include "front/events.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/device/edge.h"
#include "simulator/time/clock.h"
#include "simulator/time/timers.h"

namespace tavsim {
namespace {

bool isSimulated() {
    return front::g_isAwake && isTimeVirtual() && front::isSdl12();
}

bool hasTimers() {
    if (areTimersInitialized()) {
        return true;
    }
    static const auto setError = TAV_FRONT_NEXT(SDL_SetError);
    setError("You must call SDL_Init(SDL_INIT_TIMER) first");
    return false;
}

// SDL_SetTimer's function has no parameter, so it is passed as the parameter.
Uint32 callWithoutParameter(Uint32 interval, void* function) {
    return reinterpret_cast<SDL_TimerCallback>(function)(interval);
}

}  // namespace
}  // namespace tavsim

void front::delay(unsigned milliseconds, void (*real)(unsigned milliseconds)) try {
    if (!tavsim::isSimulated() || !tavsim::isOnApplicationThread()) {
        real(static_cast<unsigned>(tavsim::useWait(milliseconds)));
        return;
    }
    tavsim::passTime(tavsim::after(tavsim::now(), milliseconds));
} catch (...) {
    tavsim::endProgramByException();
}

extern "C" {

TAV_PLATFORM_API Uint32 SDL_GetTicks(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_GetTicks);
    if (!tavsim::isSimulated()) {
        return real();
    }
    if (tavsim::isOnApplicationThread()) {
        tavsim::lookWithoutWaiting();
    }
    return static_cast<Uint32>(tavsim::now());
}

TAV_PLATFORM_API SDL_TimerID SDL_AddTimer(Uint32 interval, SDL_NewTimerCallback function,
                                          void* parameter) try {
    static const auto real = TAV_FRONT_NEXT(SDL_AddTimer);
    if (!tavsim::isSimulated()) {
        return real(interval, function, parameter);
    }
    return tavsim::hasTimers() ? tavsim::addTimer(interval, function, parameter) : nullptr;
} catch (...) {
    return tavsim::refused<SDL_TimerID>(nullptr);
}

TAV_PLATFORM_API SDL_bool SDL_RemoveTimer(SDL_TimerID id) {
    static const auto real = TAV_FRONT_NEXT(SDL_RemoveTimer);
    if (!tavsim::isSimulated()) {
        return real(id);
    }
    return tavsim::removeTimer(id) ? SDL_TRUE : SDL_FALSE;
}

// SDL itself calls this when its timers end.
TAV_PLATFORM_API int SDL_SetTimer(Uint32 interval, SDL_TimerCallback function) try {
    static const auto real = TAV_FRONT_NEXT(SDL_SetTimer);
    if (!tavsim::isSimulated()) {
        return real(interval, function);
    }
    tavsim::removeAllTimers();
    if (interval == 0) {
        return 0;
    }
    if (!tavsim::hasTimers()) {
        return -1;
    }
    tavsim::addTimer(interval, tavsim::callWithoutParameter, reinterpret_cast<void*>(function));
    return 0;
} catch (...) {
    return tavsim::refused(-1);
}
}
