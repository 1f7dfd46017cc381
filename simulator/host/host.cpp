// The host, the preferences library, the machine name, and SDL's hooks.
#include <glib.h>
#include <limits.h>
#include <unistd.h>

#include "SDL.h"
#include "front/host.h"
#include "front/next.h"
#include "platform/hhardware.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"
#include "simulator/device/edge.h"
#include "simulator/device/faults.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/host/compass.h"

namespace tavsim {
namespace {

using Values = std::map<std::string, std::string>;

const std::string* findValue(const Values& values, const char* key) {
    const auto found = values.find(key != nullptr ? key : "");
    return found != values.end() ? &found->second : nullptr;
}

// For a look-up that fails otherwise than by having no value.
int failLookUp(int status, char* buffer, int bufferLength) {
    front::answerLookUp(nullptr, buffer, bufferLength);
    return status;
}

int lookUp(const char* function, const char* key, const std::string* value, char* buffer,
           int bufferLength) {
    const int status = tavsim::faultStrikes(tavsim::Fault::HostRequest)
                           ? failLookUp(NAPP_FAILURE, buffer, bufferLength)
                           : front::answerLookUp(value, buffer, bufferLength);
    writeEntry("host", function, "key", key, "status", status);
    return status;
}

// What the application wrote comes before what it was shipped with.
std::string dataFilePath(const std::string& name) {
    std::string own = rootFolder() + "/data";
    const std::string shipped = applicationFolder() + "/" + name;
    if (name.empty()) {
        return own;
    }
    const bool isShipped =
        access((own + "/" + name).c_str(), F_OK) != 0 && access(shipped.c_str(), F_OK) == 0;
    return isShipped ? shipped : own + "/" + name;
}

const char* lookUpOutcome(const std::string* value) {
    return value != nullptr ? "found" : "not found";
}

// One request: it is written to the journal with its unchanged argument, and carried out if the
// host accepts it. Returns what the contract prescribes: 1 accepted, 0 refused.
template <typename Action, typename... Argument>
int request(const char* kind, const char* function, const char* name, const Action& carryOut,
            const Argument&... argument) try {
    const bool accepts = hostAccepts(name);
    JournalEntry(kind, function, argument...).outcome(acceptance(accepts));
    if (accepts) {
        carryOut();
    }
    return accepts ? 1 : 0;
} catch (...) {
    return refused(0);
}

// A switch of the device's SDL.
int switchHook(const char* hook, const char* name, int enable) {
    return request(
        "sdl", hook, name, [=] { setState(name, enable != 0 ? "on" : "off"); }, "enable", enable);
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

using tavsim::running;

int NApp_GetAppinfoValue(const char* key, char* buffer, int bufferLength) try {
    const std::string* value = tavsim::findValue(running().appinfo, key);
    return tavsim::lookUp(__func__, key, value, buffer, bufferLength);
} catch (...) {
    return tavsim::failLookUp(tavsim::refused(int{NAPP_FAILURE}), buffer, bufferLength);
}

int NApp_GetDataFilePath(const char* name, char* buffer, int bufferLength) try {
    running();
    const std::string path = tavsim::dataFilePath(name != nullptr ? name : "");
    return tavsim::lookUp(__func__, name, &path, buffer, bufferLength);
} catch (...) {
    return tavsim::failLookUp(tavsim::refused(int{NAPP_FAILURE}), buffer, bufferLength);
}

int NApp_GetJsonValue(const char* json, const char* member, char* buffer, int bufferLength) try {
    running();
    std::optional<std::string> value;
    if (!front::findMember(json, member, &value)) {
        return tavsim::failLookUp(NAPP_FAILURE, buffer, bufferLength);
    }
    return tavsim::lookUp(__func__, member, value ? &*value : nullptr, buffer, bufferLength);
} catch (...) {
    return tavsim::failLookUp(tavsim::refused(int{NAPP_FAILURE}), buffer, bufferLength);
}

const char* NApp_GetPortabilityValue(const char* key) try {
    const std::string* value = tavsim::findValue(running().portability, key);
    tavsim::JournalEntry("host", __func__, "key", key).outcome(tavsim::lookUpOutcome(value));
    return value != nullptr ? value->c_str() : nullptr;
} catch (...) {
    return tavsim::refused<const char*>(nullptr);
}

int NApp_GetProcSelfExe(char* buffer, int bufferLength) try {
    const std::optional<std::string>& executable = running().executable;
    if (tavsim::faultStrikes(tavsim::Fault::HostRequest)) {
        return 0;
    }
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string real(path, length > 0 ? static_cast<size_t>(length) : 0);
    const std::string& answer = executable ? *executable : real;
    tavsim::JournalEntry("host", __func__).outcome(answer);
    return !answer.empty() && front::answerLookUp(&answer, buffer, bufferLength) == NAPP_SUCCESS;
} catch (...) {
    return tavsim::refused(0);
}

const char* HHardware_getMachine() try {
    const std::optional<std::string>& machine = running().machine;
    tavsim::JournalEntry("host", __func__).outcome(machine.value_or("unknown"));
    return machine ? machine->c_str() : nullptr;
} catch (...) {
    return tavsim::refused<const char*>(nullptr);
}

int KPSystemCopyStringValue(const char* key, char** value) try {
    const std::string* property = tavsim::findValue(running().properties, key);
    tavsim::JournalEntry("host", __func__, "key", key).outcome(tavsim::lookUpOutcome(property));
    if (tavsim::faultStrikes(tavsim::Fault::HostRequest) || property == nullptr) {
        return -1;
    }
    *value = g_strdup(property->c_str());
    return 0;
} catch (...) {
    return tavsim::refused(-1);
}

SDL_bool SDL_NimboHookIsComponent() try {
    const bool plugin = running().plugin;
    tavsim::writeEntry("sdl", __func__, "outcome", plugin);
    return plugin ? SDL_TRUE : SDL_FALSE;
} catch (...) {
    return tavsim::refused(SDL_FALSE);
}

int NApp_registerTAV(const TAVCallbacks* callbacks) try {
    tavsim::running();
    tavsim::JournalEntry("host", __func__).outcome("accepted");
    tavsim::setCompassCallback(callbacks->compassCallback);
    return 1;
} catch (...) {
    return tavsim::refused(0);
}

int NApp_EnableCompass(bool enable) {
    return tavsim::request(
        "host", __func__, "compass", [=] { tavsim::enableCompass(enable); }, "enable", enable);
}

int NApp_SetKeyboardState(int visible) {
    return tavsim::request(
        "host", __func__, "keyboard",
        [=] { tavsim::setState("keyboard", visible != 0 ? "shown" : "hidden"); }, "visible",
        visible);
}

int NApp_Minimize() {
    return tavsim::request("host", __func__, "minimize", tavsim::minimize);
}

int NApp_SetTouchAggression(int aggression) {
    return tavsim::request(
        "host", __func__, "touch",
        [=] { tavsim::setState("touch", aggression == 1 ? "aggressive" : "normal"); }, "aggression",
        aggression);
}

int SDL_NimboHookSetOrientation(const char* orientation) {
    return tavsim::request(
        "sdl", __func__, "orientation", [=] { tavsim::setState("orientation", orientation); },
        "orientation", orientation);
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
