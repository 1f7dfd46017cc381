// Helpers for all requests over the message bus.
#pragma once

#include "core/handles.h"
#include "core/report.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "tav.h"

namespace tav {

// The token of no call, and of a request that could not be dispatched.
inline constexpr int kNoCall = -1;

// The bus caller's option: in whose name a request goes out.
inline constexpr bool kForLibrary = true;
inline constexpr bool kForApplication = false;

inline constexpr char kNoString[] = "Could not allocate HString";
inline constexpr char kServiceUnreachable[] = "Unable to communicate with app card";

// Sends a one-way request of a feature of the library. A failure is reported under the function's
// name.
inline int sendRequest(const char* function, const char* uri, const char* payload) {
    if (NApp_GetKSCaller()->ksCall(uri, payload, kForLibrary) == kNoCall) {
        return TAV_FAIL(function, TAV_ECONNECTION, kServiceUnreachable);
    }
    return TAV_NOERROR;
}

// A payload of any length, for text from a caller. Null when memory is exhausted.
template <typename... Arguments>
HStringPtr formatPayload(const char* format, Arguments... arguments) {
    HStringPtr payload(HString_alloc());
    if (payload != nullptr && !HString_append(payload.get(), format, arguments...)) {
        payload.reset();
    }
    return payload;
}

}  // namespace tav
