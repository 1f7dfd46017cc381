#include "device/compass.h"

#include "core/events.h"
#include "core/init.h"
#include "core/report.h"
#include "core/value.h"
#include "platform/napp.h"

namespace tav {

TAV_CompassReading g_compass = {};
Sint32 g_bCompassActive = 0;

void resetCompass() {
    g_compass = {0, -1.0, -1.0};
}

void compassCallback(Sint32 intValue, double doubleValue1, double doubleValue2) {
    HTracker_funcTrack("tav_f", __func__, "compassCallback: %d %f %f", intValue, doubleValue1,
                       doubleValue2);
    g_compass = {intValue, doubleValue1, doubleValue2};
    pushUserEvent(TAV_EVENT_COMPASS, &g_compass);
}

}  // namespace tav

int TAV_EnableCompass(SDL_bool activate) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (TAV_IsPlugin()) {
        return TAV_FAIL(__func__, TAV_EOTHER, "Compass currently not supported for Plugins");
    }
    const Sint32 active = tav::rawValue(activate);
    if (NApp_EnableCompass(active != 0) == 0) {
        return TAV_ECONNECTION;
    }
    tav::g_bCompassActive = active;
    return TAV_NOERROR;
}

int TAV_GetCompass(TAV_CompassReading* reading) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (tav::g_calledInit == 0) {
        return TAV_FAIL(__func__, TAV_UNINIT,
                        "You must call TAV_Init before calling TAV_GetCompass");
    }
    if (tav::g_bCompassActive == 0) {
        return TAV_FAIL(__func__, TAV_UNINIT,
                        "You must call TAV_EnableCompass before calling TAV_GetCompass");
    }
    if (reading == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "Sent-in value was NULL");
    }
    *reading = tav::g_compass;
    return TAV_NOERROR;
}
