// The native-application host, the preferences library, the machine name, and SDL's hooks.
#include <glib.h>
#include <limits.h>
#include <simdjson.h>
#include <unistd.h>

#include <cstring>

#include "platform/hhardware.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"
#include "simulator/compass.h"
#include "simulator/faults.h"
#include "simulator/host.h"
#include "simulator/journal.h"
#include "simulator/json_text.h"
#include "simulator/root.h"
#include "simulator/running.h"
#include "simulator/state.h"

namespace sim {
namespace {

using Values = std::map<std::string, std::string>;

const std::string* findValue(const Values& values, const char* key) {
    const auto found = values.find(key != nullptr ? key : "");
    return found != values.end() ? &found->second : nullptr;
}

bool hasRoom(const char* buffer, int bufferLength) {
    return buffer != nullptr && bufferLength > 0;
}

// The host's way to fill a buffer: the value with its terminator, or the empty string.
int copyValue(const std::string& value, char* buffer, int bufferLength) {
    if (!hasRoom(buffer, bufferLength)) {
        return NAPP_BUFFER_TOO_SMALL;
    }
    buffer[0] = '\0';
    if (value.size() >= static_cast<size_t>(bufferLength)) {
        return NAPP_BUFFER_TOO_SMALL;
    }
    std::memcpy(buffer, value.c_str(), value.size() + 1);
    return NAPP_SUCCESS;
}

int failLookUp(int status, char* buffer, int bufferLength) {
    if (hasRoom(buffer, bufferLength)) {
        buffer[0] = '\0';
    }
    return status;
}

int lookUp(const char* function, const char* key, const std::string* value, char* buffer,
           int bufferLength) {
    int status = NAPP_SUCCESS;
    if (faultStrikes(Fault::HostRequest)) {
        status = failLookUp(NAPP_FAILURE, buffer, bufferLength);
    } else if (value == nullptr) {
        status = failLookUp(NAPP_NO_SUCH_VALUE, buffer, bufferLength);
    } else {
        status = copyValue(*value, buffer, bufferLength);
    }
    JournalEntry("host", function).text("key", key).number("status", status);
    return status;
}

// The named member of a JSON object, if it has one; nothing when the text is no object.
std::optional<Values> membersOf(const char* json, const char* member) {
    static simdjson::dom::parser& parser = *new simdjson::dom::parser;
    simdjson::dom::object object;
    const size_t length = json != nullptr ? std::strlen(json) : 0;
    if (member == nullptr || parser.parse(json, length).get(object) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    Values members;
    simdjson::dom::element value;
    if (object[std::string_view(member)].get(value) == simdjson::SUCCESS) {
        members[member] = textOf(value);
    }
    return members;
}

const char* lookUpOutcome(const std::string* value) {
    return value != nullptr ? "found" : "not found";
}

int accepted(bool accepts) {
    return accepts ? 1 : 0;
}

// One switch of the device's SDL: recorded with the value as it came.
int switchHook(const char* hook, const char* name, int enable) {
    const bool accepts = hostAccepts(name);
    JournalEntry("sdl", hook).number("enable", enable).outcome(acceptance(accepts));
    if (accepts) {
        setState(name, enable != 0 ? "on" : "off");
    }
    return accepted(accepts);
}

}  // namespace

bool hostAccepts(const char* request) {
    const bool refused = running().profile.refused.contains(request);
    return !faultStrikes(Fault::HostRequest) && !refused;
}

const char* acceptance(bool accepts) {
    return accepts ? "accepted" : "refused";
}

}  // namespace sim

using sim::running;

int NApp_registerTAV(const TAVCallbacks* callbacks) {
    running();
    sim::JournalEntry("host", __func__).outcome("accepted");
    sim::setCompassCallback(callbacks->compassCallback);
    return 1;
}

int NApp_GetAppinfoValue(const char* key, char* buffer, int bufferLength) {
    const std::string* value = sim::findValue(running().profile.appinfo, key);
    return sim::lookUp(__func__, key, value, buffer, bufferLength);
}

int NApp_GetDataFilePath(const char* name, char* buffer, int bufferLength) {
    const std::string folder = running().root() + "/data";
    const bool isFolder = name == nullptr || *name == '\0';
    const std::string path = isFolder ? folder : folder + "/" + name;
    return sim::lookUp(__func__, name, &path, buffer, bufferLength);
}

int NApp_GetJsonValue(const char* json, const char* member, char* buffer, int bufferLength) {
    running();
    const std::optional<sim::Values> members = sim::membersOf(json, member);
    if (!members) {
        return sim::failLookUp(NAPP_FAILURE, buffer, bufferLength);
    }
    return sim::lookUp(__func__, member, sim::findValue(*members, member), buffer, bufferLength);
}

const char* NApp_GetPortabilityValue(const char* key) {
    const std::string* value = sim::findValue(running().profile.portability, key);
    sim::JournalEntry("host", __func__).text("key", key).outcome(sim::lookUpOutcome(value));
    return value != nullptr ? value->c_str() : nullptr;
}

int NApp_GetProcSelfExe(char* buffer, int bufferLength) {
    const std::optional<std::string>& executable = running().profile.executable;
    if (sim::faultStrikes(sim::Fault::HostRequest) || !sim::hasRoom(buffer, bufferLength)) {
        return 0;
    }
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string real(path, length > 0 ? static_cast<size_t>(length) : 0);
    const std::string& answer = executable ? *executable : real;
    sim::JournalEntry("host", __func__).outcome(answer);
    return !answer.empty() && sim::copyValue(answer, buffer, bufferLength) == NAPP_SUCCESS;
}

HKSCaller* NApp_GetKSCaller() {
    static HKSCaller caller;
    return &caller;
}

int NApp_EnableCompass(bool enable) {
    const bool accepts = sim::hostAccepts("compass");
    sim::JournalEntry("host", __func__).flag("enable", enable).outcome(sim::acceptance(accepts));
    if (accepts) {
        sim::enableCompass(enable);
    }
    return sim::accepted(accepts);
}

int NApp_SetKeyboardState(int visible) {
    const bool accepts = sim::hostAccepts("keyboard");
    sim::JournalEntry("host", __func__)
        .number("visible", visible)
        .outcome(sim::acceptance(accepts));
    if (accepts) {
        sim::setState("keyboard", visible != 0 ? "shown" : "hidden");
    }
    return sim::accepted(accepts);
}

int NApp_Minimize() {
    const bool accepts = sim::hostAccepts("minimize");
    sim::JournalEntry("host", __func__).outcome(sim::acceptance(accepts));
    if (accepts) {
        sim::setState("window", "minimized");
        if (SDL_GetVideoSurface() != nullptr) {
            SDL_WM_IconifyWindow();
        }
    }
    return sim::accepted(accepts);
}

int NApp_SetTouchAggression(int aggression) {
    const bool accepts = sim::hostAccepts("touch");
    sim::JournalEntry("host", __func__)
        .number("aggression", aggression)
        .outcome(sim::acceptance(accepts));
    if (accepts) {
        sim::setState("touch", aggression == 1 ? "aggressive" : "normal");
    }
    return sim::accepted(accepts);
}

const char* HHardware_getMachine() {
    const std::optional<std::string>& machine = running().profile.machine;
    sim::JournalEntry("host", __func__).outcome(machine.value_or("unknown"));
    return machine ? machine->c_str() : nullptr;
}

int KPSystemCopyStringValue(const char* key, char** value) {
    const std::string* property = sim::findValue(running().profile.properties, key);
    sim::JournalEntry("host", __func__).text("key", key).outcome(sim::lookUpOutcome(property));
    if (sim::faultStrikes(sim::Fault::HostRequest) || property == nullptr) {
        return -1;
    }
    *value = g_strdup(property->c_str());
    return 0;
}

SDL_bool SDL_NimboHookIsComponent() {
    const bool plugin = running().profile.plugin;
    sim::JournalEntry("sdl", __func__).flag("outcome", plugin);
    return plugin ? SDL_TRUE : SDL_FALSE;
}

int SDL_NimboHookSetOrientation(const char* orientation) {
    const bool accepts = sim::hostAccepts("orientation");
    sim::JournalEntry("sdl", __func__)
        .text("orientation", orientation)
        .outcome(sim::acceptance(accepts));
    if (accepts) {
        sim::setState("orientation", orientation);
    }
    return sim::accepted(accepts);
}

int SDL_NimboHookSetGesturesEnable(int enable) {
    return sim::switchHook(__func__, "gestures", enable);
}

int SDL_NimboHookBannerMessagesEnable(int enable) {
    return sim::switchHook(__func__, "banners", enable);
}

int SDL_NimboHookCustomPauseUiEnable(int enable) {
    return sim::switchHook(__func__, "pauseUi", enable);
}

int SDL_NimboHookScreenTimeoutEnable(int enable) {
    return sim::switchHook(__func__, "screenTimeout", enable);
}
