// Requests to the host and to SDL's hooks.
#include "SDL.h"
#include "front/next.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"
#include "simulator/device/edge.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/host/compass.h"

namespace tavsim {
namespace {

// One request: it is written to the journal with its unchanged argument, and carried out if the
// host accepts it. Returns what the contract prescribes: 1 accepted, 0 refused.
template <typename Argument, typename Action>
int request(const char* kind, const char* function, const char* name, const char* argument,
            const Argument& value, const Action& carryOut) try {
    const bool accepts = hostAccepts(name);
    JournalEntry(kind, function, argument, value).outcome(acceptance(accepts));
    if (accepts) {
        carryOut();
    }
    return accepts ? 1 : 0;
} catch (...) {
    return refused(0);
}

// A switch of the device's SDL.
int switchHook(const char* hook, const char* name, int enable) {
    return request("sdl", hook, name, "enable", enable,
                   [=] { setState(name, enable != 0 ? "on" : "off"); });
}

void minimize() {
    setState("window", "minimized");
    static const auto videoSurface = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    static const auto iconifyWindow = TAV_FRONT_NEXT(SDL_WM_IconifyWindow);
    if (videoSurface() != nullptr) {
        iconifyWindow();
    }
}

}  // namespace
}  // namespace tavsim

int NApp_registerTAV(const TAVCallbacks* callbacks) try {
    tavsim::running();
    tavsim::JournalEntry("host", __func__).outcome("accepted");
    tavsim::setCompassCallback(callbacks->compassCallback);
    return 1;
} catch (...) {
    return tavsim::refused(0);
}

int NApp_EnableCompass(bool enable) {
    return tavsim::request("host", __func__, "compass", "enable", enable,
                           [=] { tavsim::enableCompass(enable); });
}

int NApp_SetKeyboardState(int visible) {
    return tavsim::request("host", __func__, "keyboard", "visible", visible, [=] {
        tavsim::setState("keyboard", visible != 0 ? "shown" : "hidden");
    });
}

int NApp_Minimize() try {
    const bool accepts = tavsim::hostAccepts("minimize");
    tavsim::JournalEntry("host", __func__).outcome(tavsim::acceptance(accepts));
    if (accepts) {
        tavsim::minimize();
    }
    return accepts ? 1 : 0;
} catch (...) {
    return tavsim::refused(0);
}

int NApp_SetTouchAggression(int aggression) {
    return tavsim::request("host", __func__, "touch", "aggression", aggression, [=] {
        tavsim::setState("touch", aggression == 1 ? "aggressive" : "normal");
    });
}

int SDL_NimboHookSetOrientation(const char* orientation) {
    return tavsim::request("sdl", __func__, "orientation", "orientation", orientation,
                           [=] { tavsim::setState("orientation", orientation); });
}

int SDL_NimboHookSetGesturesEnable(int enable) {
    return tavsim::switchHook(__func__, "gestures", enable);
}

int SDL_NimboHookBannerMessagesEnable(int enable) {
    return tavsim::switchHook(__func__, "banners", enable);
}

int SDL_NimboHookCustomPauseUiEnable(int enable) {
    return tavsim::switchHook(__func__, "pauseUi", enable);
}

int SDL_NimboHookScreenTimeoutEnable(int enable) {
    return tavsim::switchHook(__func__, "screenTimeout", enable);
}
