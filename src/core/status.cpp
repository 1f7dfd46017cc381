#include "core/status.h"

#include "core/value.h"
#include "platform/htracker.h"
#include "platform/napp.h"

namespace tav {

int convertFromNAppError(Sint32 status) {
    switch (status) {
    case NAPP_SUCCESS:
        return TAV_NOERROR;
    case NAPP_BUFFER_TOO_SMALL:
        return TAV_STRINGTOOSMALL;
    case NAPP_NO_SUCH_VALUE:
        return TAV_EHOSTLOOKUP;
    default:
        return TAV_EOTHER;
    }
}

}  // namespace tav

const char* getBooleanString(SDL_bool value) {
    const char* text = tav::trueOrFalse(tav::rawValue(value));
    HTracker_funcTrack("tav_f", __func__, "%s", text);
    return text;
}
