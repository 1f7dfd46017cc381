// The native-application host, the preferences library, the machine name, and SDL's hooks.
#include <glib.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "SDL.h"
#include "base/application_folder.h"
#include "front/host.h"
#include "front/next.h"
#include "linux/application/application.h"
#include "linux/host/compass.h"
#include "linux/host/desktop.h"
#include "linux/host/in_front.h"
#include "platform/hhardware.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"

namespace tavlinux {
namespace {

constexpr std::string_view kVersionProperty = "com.vire.properties.version";

int lookUp(const std::function<std::optional<std::string>(const std::string&)>& find,
           const char* key, char* buffer, int bufferLength) {
    if (!isInFront()) {
        front::answerLookUp(nullptr, buffer, bufferLength);
        return NAPP_FAILURE;
    }
    const std::optional<std::string> value = find(key != nullptr ? key : "");
    return front::answerLookUp(value ? &*value : nullptr, buffer, bufferLength);
}

// SDL 1.2 on SDL 2 has versions from 1.2.50 on. It minimises the window, but always returns 0.
bool minimizesSilently() {
    static const auto version = TAV_FRONT_NEXT(SDL_Linked_Version);
    static const auto driverName = TAV_FRONT_NEXT(SDL_VideoDriverName);
    constexpr int firstOnSdl2 = 50;
    char name[16] = "";
    driverName(name, sizeof name);
    const std::string_view driver = name;
    return version()->patch >= firstOnSdl2 && (driver == "x11" || driver == "wayland");
}

bool minimize() {
    static const auto window = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    static const auto iconify = TAV_FRONT_NEXT(SDL_WM_IconifyWindow);
    return window() != nullptr && (iconify() != 0 || minimizesSilently());
}

}  // namespace
}  // namespace tavlinux

int NApp_registerTAV(const TAVCallbacks* callbacks) {
    tavlinux::setCompassCallback(callbacks->compassCallback);
    return tavlinux::isInFront();
}

int NApp_GetAppinfoValue(const char* key, char* buffer, int bufferLength) {
    return tavlinux::lookUp(tavlinux::appinfoValue, key, buffer, bufferLength);
}

int NApp_GetDataFilePath(const char* name, char* buffer, int bufferLength) {
    return tavlinux::lookUp(tavlinux::dataFilePath, name, buffer, bufferLength);
}

int NApp_GetJsonValue(const char* json, const char* member, char* buffer, int bufferLength) {
    std::optional<std::string> value;
    const bool isObject = front::findMember(json, member, &value);
    const int status = front::answerLookUp(value ? &*value : nullptr, buffer, bufferLength);
    return isObject ? status : int{NAPP_FAILURE};
}

const char* NApp_GetPortabilityValue(const char* key) {
    static std::optional<std::string>& value = *new std::optional<std::string>;
    value = tavlinux::portabilityValue(key != nullptr ? key : "");
    return tavlinux::isInFront() && value ? value->c_str() : nullptr;
}

int NApp_GetProcSelfExe(char* buffer, int bufferLength) {
    const std::string path = base::executable();
    return tavlinux::isInFront() && !path.empty() &&
           front::answerLookUp(&path, buffer, bufferLength) == NAPP_SUCCESS;
}

int NApp_EnableCompass(bool enable) {
    return tavlinux::isInFront() && tavlinux::enableCompass(enable);
}

int NApp_SetKeyboardState(int visible) {
    return tavlinux::isInFront() && tavlinux::showKeyboard(visible != 0);
}

int NApp_Minimize() {
    return tavlinux::isInFront() && tavlinux::minimize();
}

// The following requests have no counterpart on this system.

int NApp_SetTouchAggression(int) {
    return 0;
}

int SDL_NimboHookSetOrientation(const char*) {
    return 0;
}

int SDL_NimboHookSetGesturesEnable(int) {
    return 0;
}

int SDL_NimboHookCustomPauseUiEnable(int) {
    return 0;
}

int SDL_NimboHookBannerMessagesEnable(int enable) {
    return tavlinux::isInFront() && tavlinux::enableNotifications(enable != 0);
}

int SDL_NimboHookScreenTimeoutEnable(int enable) {
    return tavlinux::isInFront() && tavlinux::enableScreenTimeout(enable != 0);
}

const char* HHardware_getMachine() {
    static const std::optional<std::string>& name =
        *new std::optional<std::string>(tavlinux::machineName());
    return tavlinux::isInFront() && name ? name->c_str() : nullptr;
}

int KPSystemCopyStringValue(const char* key, char** value) {
    const std::optional<std::string> version = tavlinux::systemVersion();
    if (!tavlinux::isInFront() || key == nullptr || key != tavlinux::kVersionProperty || !version) {
        return -1;
    }
    *value = g_strdup(version->c_str());
    return 0;
}
