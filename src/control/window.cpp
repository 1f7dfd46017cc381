#include <iterator>

#include "core/report.h"
#include "core/value.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"
#include "tav.h"

namespace {

using tav::rawValue;
using tav::trueOrFalse;

constexpr const char* kOrientationNames[] = {"bottom", "right", "top", "left"};

int reportHook(const char* function, int accepted) {
    if (accepted == 0) {
        return TAV_FAIL(function, TAV_ECONNECTION, "Unable to communicate with app card");
    }
    return TAV_NOERROR;
}

}  // namespace

int TAV_SetKeyboardState(SDL_bool visible) {
    const Sint32 value = rawValue(visible);
    HTracker_funcTrack("tav_f", __func__, "%s", trueOrFalse(value));
    if (TAV_IsPlugin()) {
        return TAV_FAIL(__func__, TAV_EOTHER, "Not allowed to bring up the keyboard as a plugin");
    }
    if (NApp_SetKeyboardState(value != 0 ? 1 : 0) == 0) {
        return TAV_FAIL(__func__, TAV_ECONNECTION, "Could not communicate with card");
    }
    return TAV_NOERROR;
}

int TAV_Minimize(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (TAV_IsPlugin()) {
        return TAV_FAIL(__func__, TAV_EOTHER, "You can not minimize a Plugin");
    }
    if (NApp_Minimize() == 0) {
        return TAV_FAIL(__func__, TAV_EOTHER, "Failed IPC communication for minimize");
    }
    return TAV_NOERROR;
}

int TAV_SetTouchAggression(int aggression) {
    HTracker_funcTrack("tav_f", __func__, "%d", aggression);
    if (TAV_IsPlugin()) {
        return TAV_FAIL(__func__, TAV_EOTHER,
                        "Could not communicate with Touch Aggression service");
    }
    if (NApp_SetTouchAggression(aggression == 1 ? 1 : -1) == 0) {
        return TAV_FAIL(__func__, TAV_ECONNECTION,
                        "Could not communicate with Touch Aggression service");
    }
    return TAV_NOERROR;
}

int TAV_CustomPauseUiEnable(SDL_bool enable) {
    const Sint32 value = rawValue(enable);
    HTracker_funcTrack("tav_f", __func__, "%s", trueOrFalse(value));
    return reportHook(__func__, SDL_NimboHookCustomPauseUiEnable(value));
}

int TAV_GesturesEnable(SDL_bool enable) {
    const Sint32 value = rawValue(enable);
    HTracker_funcTrack("tav_f", __func__, "%s", trueOrFalse(value));
    return reportHook(__func__, SDL_NimboHookSetGesturesEnable(value));
}

int TAV_BannerMessagesEnable(SDL_bool enable) {
    const Sint32 value = rawValue(enable);
    HTracker_funcTrack("tav_f", __func__, "%s", trueOrFalse(value));
    return reportHook(__func__, SDL_NimboHookBannerMessagesEnable(value));
}

int TAV_SetOrientation(TAV_Orientation orientation) {
    const Sint32 value = rawValue(orientation);
    HTracker_funcTrack("tav_f", __func__, "%d", value);
    if (value < 0 || value >= static_cast<Sint32>(std::size(kOrientationNames))) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "invalid orientation");
    }
    return reportHook(__func__, SDL_NimboHookSetOrientation(kOrientationNames[value]));
}

int TAV_ScreenTimeoutEnable(SDL_bool enable) {
    const Sint32 value = rawValue(enable);
    HTracker_funcTrack("tav_f", __func__, "%s", trueOrFalse(value));
    return reportHook(__func__, SDL_NimboHookScreenTimeoutEnable(value));
}
