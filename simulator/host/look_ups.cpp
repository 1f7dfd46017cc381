// Look-ups of the host, the preferences library, the helper library and SDL's hooks.
#include <glib.h>
#include <limits.h>
#include <simdjson.h>
#include <unistd.h>

#include <cstring>

#include "base/json/parser.h"
#include "base/json/text.h"
#include "platform/hhardware.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "platform/sdl_nimbo.h"
#include "simulator/device/edge.h"
#include "simulator/device/faults.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"

namespace tavsim {
namespace {

using Values = std::map<std::string, std::string>;

const std::string* findValue(const Values& values, const char* key) {
    const auto found = values.find(key != nullptr ? key : "");
    return found != values.end() ? &found->second : nullptr;
}

bool hasRoom(const char* buffer, int bufferLength) {
    return buffer != nullptr && bufferLength > 0;
}

// Fills a buffer like the host: with the value and its terminator, or with the empty string.
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
    if (tavsim::faultStrikes(tavsim::Fault::HostRequest)) {
        status = failLookUp(NAPP_FAILURE, buffer, bufferLength);
    } else if (value == nullptr) {
        status = failLookUp(NAPP_NO_SUCH_VALUE, buffer, bufferLength);
    } else {
        status = copyValue(*value, buffer, bufferLength);
    }
    JournalEntry("host", function).member("key", key).member("status", status);
    return status;
}

// The named member of a JSON object; nothing when it has none, or the text is not an object.
std::optional<Values> membersOf(const char* json, const char* member) {
    static simdjson::dom::parser& parser = *new simdjson::dom::parser;
    simdjson::dom::element root;
    simdjson::dom::object object;
    if (member == nullptr || json == nullptr || !base::parse(parser, json, false, &root) ||
        root.get(object) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    Values members;
    simdjson::dom::element value;
    if (object[std::string_view(member)].get(value) == simdjson::SUCCESS) {
        members[member] = base::textOf(value);
    }
    return members;
}

const char* lookUpOutcome(const std::string* value) {
    return value != nullptr ? "found" : "not found";
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
    const std::string folder = tavsim::rootFolder() + "/data";
    const bool isFolder = name == nullptr || *name == '\0';
    const std::string path = isFolder ? folder : folder + "/" + name;
    return tavsim::lookUp(__func__, name, &path, buffer, bufferLength);
} catch (...) {
    return tavsim::failLookUp(tavsim::refused(int{NAPP_FAILURE}), buffer, bufferLength);
}

int NApp_GetJsonValue(const char* json, const char* member, char* buffer, int bufferLength) try {
    running();
    const std::optional<tavsim::Values> members = tavsim::membersOf(json, member);
    if (!members) {
        return tavsim::failLookUp(NAPP_FAILURE, buffer, bufferLength);
    }
    return tavsim::lookUp(__func__, member, tavsim::findValue(*members, member), buffer,
                          bufferLength);
} catch (...) {
    return tavsim::failLookUp(tavsim::refused(int{NAPP_FAILURE}), buffer, bufferLength);
}

const char* NApp_GetPortabilityValue(const char* key) try {
    const std::string* value = tavsim::findValue(running().portability, key);
    tavsim::JournalEntry("host", __func__).member("key", key).outcome(tavsim::lookUpOutcome(value));
    return value != nullptr ? value->c_str() : nullptr;
} catch (...) {
    return tavsim::refused<const char*>(nullptr);
}

int NApp_GetProcSelfExe(char* buffer, int bufferLength) try {
    const std::optional<std::string>& executable = running().executable;
    if (tavsim::faultStrikes(tavsim::Fault::HostRequest) ||
        !tavsim::hasRoom(buffer, bufferLength)) {
        return 0;
    }
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string real(path, length > 0 ? static_cast<size_t>(length) : 0);
    const std::string& answer = executable ? *executable : real;
    tavsim::JournalEntry("host", __func__).outcome(answer);
    return !answer.empty() && tavsim::copyValue(answer, buffer, bufferLength) == NAPP_SUCCESS;
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
    tavsim::JournalEntry("host", __func__)
        .member("key", key)
        .outcome(tavsim::lookUpOutcome(property));
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
    tavsim::JournalEntry("sdl", __func__).member("outcome", plugin);
    return plugin ? SDL_TRUE : SDL_FALSE;
} catch (...) {
    return tavsim::refused(SDL_FALSE);
}
