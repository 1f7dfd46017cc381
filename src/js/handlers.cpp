#include "js/handlers.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

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
    JSHandlerEntry* next;  // in the same bucket of the hash table, in the order of registration
    std::size_t hash;      // of the stored name
    char name[kStoredNameSize];
};

std::size_t hashOf(const char* name) {
    return std::hash<std::string_view>()(name);
}

// Owns its entries. Names are unique, apart from long ones that are equal once they are cut. The
// list has the order of registration. The chains of a hash table link the same entries, so a
// look-up by name is fast and the chains need no allocation.
class HandlerRegistry {
public:
    ~HandlerRegistry() { clear(); }

    int size() const { return m_entries.size(); }

    JSHandlerEntry* at(int index) const {
        return static_cast<JSHandlerEntry*>(m_entries.get(index));
    }

    JSHandlerEntry* find(const char* name) const {
        const std::size_t hash = hashOf(name);
        for (JSHandlerEntry* entry = m_chains[hash % kChains]; entry != nullptr;
             entry = entry->next) {
            if (entry->hash == hash && std::strcmp(entry->name, name) == 0) {
                return entry;
            }
        }
        return nullptr;
    }

    // False when memory is exhausted.
    bool add(const char* name, TAV_JSHandler handler) {
        std::unique_ptr<JSHandlerEntry> entry(new (std::nothrow) JSHandlerEntry());
        if (entry == nullptr || !m_entries.append(entry.get())) {
            return false;
        }
        std::snprintf(entry->name, sizeof entry->name, "%s", name);
        entry->handler = handler;
        entry->hash = hashOf(entry->name);
        JSHandlerEntry** end = &m_chains[entry->hash % kChains];
        while (*end != nullptr) {
            end = &(*end)->next;
        }
        *end = entry.release();  // owned by the list and in its chain from here on
        return true;
    }

    void clear() {
        for (int index = 0; index < size(); ++index) {
            delete at(index);
        }
        m_entries.clear();
        std::fill(std::begin(m_chains), std::end(m_chains), nullptr);
    }

private:
    static constexpr std::size_t kChains = 1024;

    HLinkedList m_entries;
    JSHandlerEntry* m_chains[kChains] = {};
};

HandlerRegistry g_jsHandlers;

// The parameters of one call. There is room for a few, and it grows with those that really arrive.
// The count that the page sends is not trusted and must not decide how much memory is allocated.
class ParameterList {
public:
    ParameterList() = default;
    ~ParameterList() {
        for (int index = 0; index < m_size; ++index) {
            delete[] m_texts[static_cast<std::size_t>(index)];
        }
        if (m_texts != m_few) {
            delete[] m_texts;
        }
    }
    ParameterList(const ParameterList&) = delete;
    ParameterList& operator=(const ParameterList&) = delete;

    int size() const { return m_size; }
    char** texts() const { return m_size > 0 ? m_texts : nullptr; }

    // Takes ownership of the text in either case. False when memory is exhausted.
    bool append(std::unique_ptr<char[]> text) {
        if (static_cast<std::size_t>(m_size) == m_capacity && !grow()) {
            return false;
        }
        m_texts[static_cast<std::size_t>(m_size++)] = text.release();
        return true;
    }

private:
    bool grow() {
        const std::size_t capacity = 2 * m_capacity;
        char** grown = new (std::nothrow) char*[capacity];
        if (grown == nullptr) {
            return false;
        }
        std::copy_n(m_texts, m_size, grown);
        if (m_texts != m_few) {
            delete[] m_texts;
        }
        m_texts = grown;
        m_capacity = capacity;
        return true;
    }

    char* m_few[8] = {};
    char** m_texts = m_few;
    std::size_t m_capacity = std::size(m_few);
    int m_size = 0;
};

// Reads the announced parameters, or fewer when the message ends before. False when memory is
// exhausted.
bool readParameters(HDataReader& reader, int announced, ParameterList* parameters) {
    while (parameters->size() < announced) {
        std::unique_ptr<char[]> text(reader.allocReadStr());
        if (text == nullptr && !reader.isSuccessful()) {
            return true;
        }
        if (!parameters->append(std::move(text))) {
            return false;
        }
    }
    return true;
}

TAV_JSHandler findHandler(const char* name) {
    const JSHandlerEntry* entry = g_jsHandlers.find(name);
    return entry != nullptr ? entry->handler : nullptr;
}

// False when there is not enough memory to perform the call.
bool callHandler(TAV_JSHandler handler, HDataReader& reader, TAV_JSParameters* call) {
    call->count = reader.readInt();
    call->reply = tav::g_emptyAnswer;
    TAV_JSReply(call, "");
    ParameterList parameters;
    if (!readParameters(reader, call->count, &parameters)) {
        return false;
    }
    if (call->count > 0) {
        call->count = parameters.size();
        call->parameters = parameters.texts();
    }
    handler(call);
    return true;
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
    TAV_JSParameters call = {};
    char name[kCalledNameSize];
    reader->readStr(name, sizeof name);
    if (!reader->isSuccessful()) {
        return false;
    }
    // The handler may delete the entry, so it is not used from here on.
    const TAV_JSHandler handler = findHandler(name);
    bool isPerformed = true;
    if (handler == nullptr) {
        TAV_JSException(&call, kUnknownFunction);
    } else {
        isPerformed = callHandler(handler, *reader, &call);
    }
    const std::unique_ptr<char[]> owned(call.reply != g_emptyAnswer ? call.reply : nullptr);
    if (!isPerformed || call.reply == nullptr) {
        HTracker_funcTrack("tav_e", __func__, kOutOfMemory);
        return false;
    }
    writer->writeBool(call.isException != 0);
    writer->writeStr(call.reply);
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
    } else if (!g_jsHandlers.add(methodName, handler)) {
        return TAV_FAIL(__func__, TAV_NOERROR, tav::kOutOfMemory);
    }
    return TAV_NOERROR;
}

int TAV_JSRegistrationComplete(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (!NApp_RegisterKiteHandlers(tav::jsGetMethodsCallback, tav::jsMethodCallback)) {
        return TAV_FAIL(__func__, TAV_ECONNECTION,
                        "Could not register JS Handlers. Either this was not launched as a "
                        "plugin, or the IPC is not yet set up.");
    }
    tav::g_jsRegistrationComplete = true;
    return TAV_NOERROR;
}

void TAV_JSQuit() {
    HTracker_funcTrack("tav_f", __func__, "--");
    g_jsHandlers.clear();
}

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
