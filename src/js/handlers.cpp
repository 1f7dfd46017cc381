#include "js/handlers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "core/report.h"
#include "platform/hlinkedlist.h"
#include "platform/napp.h"

namespace tav {

bool g_jsRegistrationComplete = false;

}  // namespace tav

namespace {

constexpr int kStoredNameSize = 4096;
constexpr int kCalledNameSize = 256;
constexpr char kUnknownFunction[] = "Unknown Function";

struct JSHandlerEntry {
    TAV_JSHandler handler;
    char name[kStoredNameSize];
};

// Owns its entries. Names are unique, as far as the cut of long ones allows.
class HandlerRegistry {
public:
    ~HandlerRegistry() { clear(); }

    int size() const { return m_entries.size(); }

    JSHandlerEntry* at(int index) const {
        return static_cast<JSHandlerEntry*>(m_entries.get(index));
    }

    JSHandlerEntry* find(const char* name) const {
        for (int index = 0; index < size(); ++index) {
            if (std::strcmp(at(index)->name, name) == 0) {
                return at(index);
            }
        }
        return nullptr;
    }

    void add(const char* name, TAV_JSHandler handler) {
        auto* entry = new JSHandlerEntry();
        // cppcheck-suppress uninitdata; the parentheses fill it with zeros
        std::snprintf(entry->name, sizeof entry->name, "%s", name);
        entry->handler = handler;
        m_entries.append(entry);
    }

    void clear() {
        for (int index = 0; index < size(); ++index) {
            delete at(index);
        }
        m_entries.clear();
    }

private:
    HLinkedList m_entries;
};

HandlerRegistry g_jsHandlers;

// The count in the public part is the one that was sent; the message may hold fewer parameters.
struct JSCall : TAV_JSParameters {
    int availableCount;
};

// The array grows with the parameters that are really there, because the count alone, which is
// anything the page likes, must not decide how much memory is taken.
std::vector<char*> readParameters(HDataReader& reader, int count) {
    std::vector<char*> parameters;
    while (static_cast<int>(parameters.size()) < count) {
        char* parameter = reader.allocReadStr();
        if (!reader.isSuccessful()) {
            delete[] parameter;
            break;
        }
        parameters.push_back(parameter);
    }
    return parameters;
}

TAV_JSHandler findHandler(const char* name) {
    const JSHandlerEntry* entry = g_jsHandlers.find(name);
    return entry != nullptr ? entry->handler : nullptr;
}

void callHandler(TAV_JSHandler handler, HDataReader& reader, JSCall* call) {
    call->count = reader.readInt();
    TAV_JSReply(call, "");
    const std::vector<char*> parameters = readParameters(reader, call->count);
    call->availableCount = static_cast<int>(parameters.size());
    call->parameters = const_cast<char**>(parameters.data());
    handler(call);
    for (char* parameter : parameters) {
        delete[] parameter;
    }
}

void writeAnswer(HDataWriter& writer, const TAV_JSParameters& call) {
    writer.writeBool(call.isException != 0);
    writer.writeStr(call.reply);
    delete[] call.reply;
}

// The parameter's text; the empty string for one that is null, missing or out of range.
const char* parameterText(const TAV_JSParameters* parameters, int index) {
    if (parameters == nullptr || index < 0 || index >= parameters->count ||
        index >= static_cast<const JSCall*>(parameters)->availableCount) {
        return "";
    }
    const char* text = parameters->parameters[index];
    return text != nullptr ? text : "";
}

char* copyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

}  // namespace

namespace tav {

bool jsGetMethodsCallback(HDataWriter* writer) {
    HTracker_funcTrack("tav_f", __func__, "%p", static_cast<void*>(writer));
    writer->writeInt(g_jsHandlers.size());
    for (int index = 0; index < g_jsHandlers.size(); ++index) {
        writer->writeStr(g_jsHandlers.at(index)->name);
    }
    return true;
}

bool jsMethodCallback(HDataReader* reader, HDataWriter* writer) {
    HTracker_funcTrack("tav_f", __func__, "%p, %p", static_cast<void*>(reader),
                       static_cast<void*>(writer));
    JSCall call = {};
    char name[kCalledNameSize] = {};
    reader->readStr(name, sizeof name);
    if (!reader->isSuccessful()) {
        return false;
    }
    // From here on the entry is not touched: its handler may delete it.
    const TAV_JSHandler handler = findHandler(name);
    if (handler == nullptr) {
        TAV_JSException(&call, kUnknownFunction);
    } else {
        callHandler(handler, *reader, &call);
    }
    writeAnswer(*writer, call);
    return true;
}

}  // namespace tav

int TAV_RegisterJSHandler(const char* methodName, TAV_JSHandler handler) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p", methodName, reinterpret_cast<void*>(handler));
    if (methodName == nullptr) {
        return TAV_NOERROR;
    }
    if (JSHandlerEntry* entry = g_jsHandlers.find(methodName)) {
        entry->handler = handler;
    } else {
        g_jsHandlers.add(methodName, handler);
    }
    return TAV_NOERROR;
}

int TAV_JSRegistrationComplete(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (!NApp_RegisterKiteHandlers(tav::jsGetMethodsCallback, tav::jsMethodCallback)) {
        return tav::fail(__func__, TAV_ECONNECTION,
                         "Could not register JS Handlers. Either this was not launched as a "
                         "plugin, or the IPC is not yet set up.");
    }
    tav::g_jsRegistrationComplete = true;
    return TAV_NOERROR;
}

int TAV_GetNumJSParams(TAV_JSParameters* parameters) {
    HTracker_funcTrack("tav_f", __func__, "%p", static_cast<void*>(parameters));
    return parameters != nullptr ? parameters->count : 0;
}

const char* TAV_GetJSParamString(TAV_JSParameters* parameters, int index) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(parameters), index);
    return parameterText(parameters, index);
}

int TAV_GetJSParamInt(TAV_JSParameters* parameters, int index) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(parameters), index);
    // A long may be wider than the result: what does not fit becomes the nearest value that does.
    const long value = std::strtol(parameterText(parameters, index), nullptr, 10);
    return static_cast<int>(
        std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double TAV_GetJSParamDouble(TAV_JSParameters* parameters, int index) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(parameters), index);
    return std::strtod(parameterText(parameters, index), nullptr);
}

int TAV_JSReply(TAV_JSParameters* parameters, const char* reply) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", static_cast<void*>(parameters), reply);
    if (parameters == nullptr) {
        return TAV_NOERROR;
    }
    // Copied before the old reply goes: the new one may be part of it.
    char* copy = copyText(reply != nullptr ? reply : "");
    delete[] parameters->reply;
    parameters->reply = copy;
    parameters->isException = 0;
    return TAV_NOERROR;
}

int TAV_JSException(TAV_JSParameters* parameters, const char* message) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", static_cast<void*>(parameters), message);
    if (parameters == nullptr) {
        return TAV_NOERROR;
    }
    TAV_JSReply(parameters, message);
    parameters->isException = 1;
    return TAV_NOERROR;
}

void TAV_JSQuit() {
    HTracker_funcTrack("tav_f", __func__, "--");
    g_jsHandlers.clear();
}
