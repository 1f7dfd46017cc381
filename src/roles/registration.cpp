#include "roles/registration.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/htracker.h"
#include "platform/napp.h"
#include "roles/families.h"

namespace {

constexpr int kTextSize = 4096;

// The part after the last '/'; null when there is no '/' or nothing behind it.
const char* shortName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash != nullptr && slash[1] != '\0' ? slash + 1 : nullptr;
}

}  // namespace

int registerRoleFile() {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (getuid() != 0) {
        HTracker_funcTrack("tav_1", __func__, "Not a root user");
        return TAV_EOTHER;
    }
    char exePath[kTextSize] = {};
    if (NApp_GetProcSelfExe(exePath, sizeof exePath) == 0) {
        HTracker_funcTrack("tav_1", __func__, "couldn't get exe path");
        return TAV_EOTHER;
    }
    char appId[kTextSize] = {};
    if (TAV_GetAppinfoValue("id", appId, sizeof appId) != TAV_NOERROR) {
        const char* name = shortName(exePath);
        if (name == nullptr) {
            HTracker_funcTrack("tav_1", __func__, "couldn't parse shortname");
            return TAV_EOTHER;
        }
        std::snprintf(appId, sizeof appId, "%s", name);
    }
    tav::generateKobRoles(appId, exePath);
    return TAV_NOERROR;
}
