// Calls from the page: the host's message is read item by item, then dispatched to handlers that
// use everything in it. Input: the message's bytes.
#include <algorithm>
#include <climits>
#include <cstring>

#include "fuzz.h"
#include "js/handlers.h"

using tavfuzz::expect;

namespace {

int g_handlerCalls = 0;

// Provokes dangling pointers: replies twice, removes all handlers, registers one under a name from
// the page, and replies with a part of its own reply.
void onCall(TAV_JSParameters* call) {
    ++g_handlerCalls;
    const int count = TAV_GetNumJSParams(call);
    for (int index = -1; index <= count; ++index) {
        const char* text = TAV_GetJSParamString(call, index);
        const bool isThere = index >= 0 && index < count;
        expect(*text == '\0' || (isThere && text == call->parameters[index]),
               "the record holds as many parameters as it says");
        const double number = TAV_GetJSParamDouble(call, index);
        const int integer = TAV_GetJSParamInt(call, index);
        expect(*text != '\0' || (integer == 0 && number == 0.0), "an empty parameter reads as 0");
    }
    TAV_JSException(call, TAV_GetJSParamString(call, INT_MAX));
    TAV_JSReply(call, TAV_GetJSParamString(call, 0));
    TAV_JSQuit();
    TAV_RegisterJSHandler(TAV_GetJSParamString(call, 1), onCall);
    TAV_JSReply(call, call->reply + std::strlen(call->reply) / 2);
}

// Reads items of the types that the bytes themselves choose.
void readItems(const std::uint8_t* bytes, std::size_t size) {
    HDataReader reader(bytes, size);
    bool failed = false;
    for (std::size_t place = 0; place < std::min<std::size_t>(size, 32); ++place) {
        bool isNothing = true;
        if (bytes[place] % 4 == 0) {
            isNothing = reader.readInt() == 0;
        } else if (bytes[place] % 4 == 1) {
            isNothing = !reader.readBool();
        } else if (bytes[place] % 4 == 2) {
            const int length = bytes[place] % 8;
            const std::unique_ptr<char[]> buffer(new char[length]());
            reader.readStr(buffer.get(), length);
            isNothing = length == 0 || buffer[0] == '\0';
        } else {
            const std::unique_ptr<char[]> text(reader.allocReadStr());
            isNothing = text == nullptr;
            expect(isNothing || std::strlen(text.get()) <= size,
                   "a text is no longer than its message");
        }
        expect(isNothing || reader.isSuccessful(), "a failed read gives nothing");
        expect(!failed || !reader.isSuccessful(), "after a failure every read fails");
        failed = !reader.isSuccessful();
    }
}

void dispatch(const std::uint8_t* bytes, std::size_t size) {
    TAV_JSQuit();
    for (const char* name : {"echo", "refuse", "replace", ""}) {
        TAV_RegisterJSHandler(name, onCall);
    }
    g_handlerCalls = 0;
    HDataReader reader(bytes, size);
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
    readItems(bytes, size);
    dispatch(bytes, size);
    return 0;
}
