// Calls from the page: the message as it comes from the host, read item by item and dispatched to
// handlers that look at everything. Input: the message's bytes.
#include <climits>
#include <cstring>

#include "fuzz.h"
#include "js/handlers.h"

using tavfuzz::expect;

namespace {

// In storage of exactly its size, where reading past the end is noticed.
class Message {
public:
    Message(const std::uint8_t* bytes, std::size_t size)
        : m_bytes(new std::uint8_t[size]), m_size(size) {
        std::copy(bytes, bytes + size, m_bytes.get());
    }

    HDataReader reader() const { return {m_bytes.get(), m_size}; }

private:
    std::unique_ptr<std::uint8_t[]> m_bytes;
    std::size_t m_size;
};

int g_handlerCalls = 0;

void lookAt(TAV_JSParameters* call, int index) {
    const char* text = TAV_GetJSParamString(call, index);
    expect(text != nullptr, "a parameter's text is never null");
    const double number = TAV_GetJSParamDouble(call, index);
    const int integer = TAV_GetJSParamInt(call, index);
    expect(*text != '\0' || (integer == 0 && number == 0.0), "an empty parameter reads as 0");
}

void lookAtAll(TAV_JSParameters* call) {
    ++g_handlerCalls;
    const int count = TAV_GetNumJSParams(call);
    for (int index = 0; index < count; ++index) {
        const char* text = call->parameters[index];
        expect(text == nullptr || text == TAV_GetJSParamString(call, index),
               "the record holds as many parameters as it says");
        lookAt(call, index);
    }
    for (const int index : {-1, count, INT_MIN, INT_MAX}) {
        lookAt(call, index);
    }
    expect(*TAV_GetJSParamString(call, count) == '\0', "behind the last parameter there is none");
}

void onEcho(TAV_JSParameters* call) {
    lookAtAll(call);
    TAV_JSReply(call, TAV_GetJSParamString(call, 0));
}

void onRefuse(TAV_JSParameters* call) {
    lookAtAll(call);
    TAV_JSReply(call, "not this");
    TAV_JSException(call, TAV_GetJSParamString(call, 0));
}

// Registers under names from the page, forgets everything, and answers with its own answer's tail.
void onReplace(TAV_JSParameters* call) {
    lookAtAll(call);
    TAV_RegisterJSHandler(TAV_GetJSParamString(call, 0), onEcho);
    TAV_JSQuit();
    TAV_RegisterJSHandler(TAV_GetJSParamString(call, 1), onEcho);
    TAV_JSReply(call, "tail");
    TAV_JSReply(call, call->reply + 2);
}

void registerHandlers() {
    TAV_JSQuit();
    TAV_RegisterJSHandler("echo", onEcho);
    TAV_RegisterJSHandler("refuse", onRefuse);
    TAV_RegisterJSHandler("replace", onReplace);
    TAV_RegisterJSHandler("", onEcho);
}

// Reads whatever comes, in an order that the bytes themselves give.
void readItems(const Message& message, const std::uint8_t* bytes, std::size_t size) {
    HDataReader reader = message.reader();
    bool failed = false;
    for (std::size_t place = 0; place < std::min<std::size_t>(size, 32); ++place) {
        tavfuzz::Buffer buffer(bytes[place] % 8);
        switch (bytes[place] % 4) {
        case 0: {
            const int value = reader.readInt();
            expect(reader.isSuccessful() || value == 0, "a failed read gives 0");
            break;
        }
        case 1: {
            const bool value = reader.readBool();
            expect(reader.isSuccessful() || !value, "a failed read gives false");
            break;
        }
        case 2:
            reader.readStr(buffer.data(), buffer.length());
            buffer.expectGuards();
            expect(buffer.length() == 0 || buffer.text().empty() || reader.isSuccessful(),
                   "a failed read gives the empty text");
            break;
        default: {
            const std::unique_ptr<char[]> text(reader.allocReadStr());
            expect(text == nullptr || reader.isSuccessful(), "a failed read gives no text");
            expect(text == nullptr || std::strlen(text.get()) <= size,
                   "a text is no longer than its message");
            break;
        }
        }
        expect(!failed || !reader.isSuccessful(), "after a failure every read fails");
        failed = !reader.isSuccessful();
    }
}

void dispatch(const Message& message) {
    registerHandlers();
    g_handlerCalls = 0;
    HDataReader reader = message.reader();
    HDataWriter writer;
    if (!tav::jsMethodCallback(&reader, &writer)) {
        expect(writer.size() == 0 && g_handlerCalls == 0,
               "a call without a name is neither performed nor answered");
        return;
    }
    HDataReader answer(writer.bytes(), writer.size());
    const bool isException = answer.readBool();
    const std::unique_ptr<char[]> text(answer.allocReadStr());
    expect(answer.isSuccessful() && text != nullptr, "an answer is a boolean and a text");
    answer.readInt();
    expect(!answer.isSuccessful(), "an answer is no more than that");
    expect(g_handlerCalls == 1 || (isException && std::strcmp(text.get(), "Unknown Function") == 0),
           "a call has one handler or is answered as unknown");
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    tavfuzz::startDevice();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    const Message message(bytes, size);
    readItems(message, bytes, size);
    dispatch(message);
    return 0;
}
