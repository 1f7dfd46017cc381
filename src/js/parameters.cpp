#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "core/report.h"
#include "js/handlers.h"
#include "tav.h"

namespace tav {

char g_emptyAnswer[] = "";

}  // namespace tav

namespace {

// The parameter's text; the empty string for one that is null, missing or out of range.
const char* parameterText(const TAV_JSParameters* parameters, int index) {
    if (parameters == nullptr || parameters->parameters == nullptr || index < 0 ||
        index >= parameters->count) {
        return "";
    }
    const char* text = parameters->parameters[index];
    return text != nullptr ? text : "";
}

// Null when memory is exhausted.
char* copyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new (std::nothrow) char[size];
    if (copy != nullptr) {
        std::memcpy(copy, text, size);
    }
    return copy;
}

}  // namespace

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
    // A long may be wider than the result. A value that does not fit becomes the nearest one that
    // does.
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
    const char* text = reply != nullptr ? reply : "";
    const bool isOwned = parameters->reply != tav::g_emptyAnswer;
    // Copied before the old reply is released, because the new one may be a part of it.
    char* copy = !isOwned && *text == '\0' ? parameters->reply : copyText(text);
    if (isOwned) {
        delete[] parameters->reply;
    }
    parameters->reply = copy;
    parameters->isException = 0;
    if (copy == nullptr) {
        return TAV_FAIL(__func__, TAV_NOERROR, tav::kOutOfMemory);
    }
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
