#include "core/report.h"
#include "js/handlers.h"
#include "platform/napp.h"
#include "tav.h"

int TAV_CallJS(const char* functionName, const char** arguments, int argumentCount) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p, %d", functionName, static_cast<void*>(arguments),
                       argumentCount);
    if (!TAV_IsPlugin()) {
        return TAV_FAIL(__func__, TAV_ECONNECTION,
                        "TAV_CallJS only functions in Plug-in components");
    }
    if (!tav::g_jsRegistrationComplete) {
        return TAV_FAIL(__func__, TAV_UNINIT,
                        "You must call TAV_JSRegistrationComplete before calling TAV_CallJS");
    }
    if (!NApp_JSCall(functionName, arguments, argumentCount)) {
        return TAV_FAIL(__func__, TAV_ECONNECTION, "Unable to dispatch message");
    }
    return TAV_NOERROR;
}
