// Replies of services, read by the six functions that read them. Input: the buffer's length in one
// byte, the key in a line, the reply.
#include <cmath>

#include "core/handles.h"
#include "fuzz.h"
#include "tav.h"

using tavfuzz::expect;

namespace {

constexpr double kSmallestInt = -2147483648.0;
constexpr double kLargestInt = 2147483647.0;

void checkAbsent(const TAV_ServiceParameters& reply, const char* key) {
    expect(TAV_GetParamBool(&reply, key) == SDL_FALSE && TAV_GetParamInt(&reply, key) == 0 &&
               TAV_GetParamDouble(&reply, key) == 0.0,
           "an absent member reads as 0");
}

void checkNumbers(const TAV_ServiceParameters& reply, const char* key) {
    const double asDouble = TAV_GetParamDouble(&reply, key);
    const int asInt = TAV_GetParamInt(&reply, key);
    expect(std::isfinite(asDouble), "a number is finite");
    const double whole = std::trunc(asDouble);
    const bool fits = whole >= kSmallestInt && whole <= kLargestInt;
    expect(asInt == (fits ? static_cast<int>(whole) : 0),
           "an integer is the number without its fraction, or 0");
    const SDL_bool asBool = TAV_GetParamBool(&reply, key);
    expect(asBool == SDL_FALSE || (asBool == SDL_TRUE && asDouble == 0.0),
           "a value is not a boolean and a number at once");
}

// The whole value, or nothing where it has no room.
void checkString(const TAV_ServiceParameters& reply, const char* key, int bufferLength) {
    tavfuzz::Buffer buffer(bufferLength);
    TAV_GetParamString(&reply, key, buffer.data(), buffer.length());
    buffer.expectGuards();
    if (bufferLength == 0) {
        expect(buffer.isUntouched(), "a buffer without room is left alone");
        return;
    }
    const tav::HStringPtr value(HJson_getValueFromStr(reply.reply, key));
    const bool fits = value != nullptr && value->length < static_cast<std::size_t>(bufferLength);
    expect(buffer.text() == (fits ? HString_toStr(value.get()) : ""),
           "the text is all of the value or nothing");
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    tavfuzz::startDevice();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    tavfuzz::Input input(bytes, size);
    const int bufferLength = input.byte();
    const std::string key = input.line();
    const std::string text = input.rest();
    const TAV_ServiceParameters reply = {text.c_str(), 0, 0};
    expect(TAV_GetParamJson(&reply) == text.c_str(), "the reply is handed on as it came");
    if (TAV_ParamExists(&reply, key.c_str()) == SDL_FALSE) {
        checkAbsent(reply, key.c_str());
    } else {
        checkNumbers(reply, key.c_str());
    }
    checkString(reply, key.c_str(), bufferLength);
    return 0;
}
