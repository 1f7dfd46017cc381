#include "core/init.h"

#include "device/compass.h"
#include "js/handlers.h"
#include "platform/htracker.h"
#include "platform/napp.h"
#include "roles/registration.h"
#include "services/service_calls.h"
#include "tav.h"

namespace tav {

Sint32 g_calledInit = 0;

}  // namespace tav

int TAV_Init(int flags) {
    HTracker_funcTrack("tav_f", __func__, "%d", flags);
    // Without roles the application has less of the bus, but everything else works.
    registerRoleFile();
    tav::resetCompass();
    HTracker_funcTrack("tav_2", __func__, "Initting NApp with TAV callbacks");
    const TAVCallbacks callbacks = {tav::compassCallback};
    NApp_registerTAV(&callbacks);
    tav::g_calledInit = 1;
    return TAV_NOERROR;
}

void TAV_Quit(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    TAV_ServicesQuit();
    TAV_JSQuit();
}
