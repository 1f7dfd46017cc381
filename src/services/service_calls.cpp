#include "services/service_calls.h"

#include <memory>
#include <new>
#include <tuple>

#include "core/report.h"
#include "core/value.h"
#include "platform/hlinkedlist.h"
#include "platform/htracker.h"
#include "services/bus.h"

namespace {

using tav::UserCallbackContext;

constexpr char kNotDispatched[] = "Unable to dispatch service call";

HLinkedList g_openCalls;
std::uint64_t g_lastSerial = 0;

UserCallbackContext* openCall(int index) {
    return static_cast<UserCallbackContext*>(g_openCalls.get(index));
}

bool isOpen(const UserCallbackContext* call) {
    return g_openCalls.getLLElem(call) != nullptr;
}

int dispatch(const char* uri, const char* payload, UserCallbackContext* call) {
    HKSCaller* bus = NApp_GetKSCaller();
    if (call->removeAfterResponse != 0) {
        return bus->ksCallWithResponse(uri, payload, tav::kForApplication, tav::userCallback, call);
    }
    return bus->ksCallWithSubscription(uri, payload, tav::kForApplication, tav::userCallback, call);
}

}  // namespace

namespace tav {

UserCallbackContext::UserCallbackContext() : token(kNoCall), serial(++g_lastSerial) {
    HTracker_funcTrack("tav_f", __func__, "--");
}

void userCallback(int token, const char* reply, void* context) {
    HTracker_funcTrack("tav_f", __func__, "%p", context);
    auto* call = static_cast<UserCallbackContext*>(context);
    if (!isOpen(call)) {
        HTracker_funcTrack("tav_1", __func__, "ignored callback");
        return;
    }
    if (call->token != token) {
        HTracker_funcTrack("tav_1", __func__, "callback had incorrect id. Ignoring");
        return;
    }
    const bool isOneShot = call->removeAfterResponse != 0;
    const std::uint64_t serial = call->serial;
    TAV_ServiceParameters parameters = {reply, 0, 0};
    call->callback(&parameters, call->userData);
    // The pointer may be dangling: the application may have removed the call, and another one may
    // have been allocated at its address.
    if (isOneShot && isOpen(call) && call->serial == serial) {
        g_openCalls.remove(call);
        delete call;
    }
}

}  // namespace tav

int TAV_ServiceCallWithCallback(const char* uri, const char* payload, TAV_ServiceCallback callback,
                                void* userData, SDL_bool removeAfterResponse) {
    const Sint32 oneShot = tav::rawValue(removeAfterResponse);
    HTracker_funcTrack("tav_f", __func__, "%s, %s, %p, %p, %s", uri, payload,
                       reinterpret_cast<void*>(callback), userData, tav::trueOrFalse(oneShot));
    if (callback == nullptr) {
        if (NApp_GetKSCaller()->ksCall(uri, payload, tav::kForApplication) == tav::kNoCall) {
            return TAV_FAIL(__func__, TAV_ECONNECTION, kNotDispatched);
        }
        return TAV_NOERROR;
    }
    std::unique_ptr<UserCallbackContext> call(new (std::nothrow) UserCallbackContext);
    if (call == nullptr) {
        return TAV_FAIL(__func__, TAV_ECONNECTION, kNotDispatched);
    }
    call->callback = callback;
    call->userData = userData;
    call->removeAfterResponse = oneShot;
    call->token = dispatch(uri, payload, call.get());
    if (call->token == tav::kNoCall) {
        return TAV_FAIL(__func__, TAV_ECONNECTION, kNotDispatched);
    }
    if (!g_openCalls.append(call.get())) {
        NApp_GetKSCaller()->ksCancelCall(call->token);
        return TAV_FAIL(__func__, TAV_ECONNECTION, kNotDispatched);
    }
    std::ignore = call.release();  // owned by the registry from here on
    return TAV_NOERROR;
}

int TAV_ServiceCall(const char* uri, const char* payload) {
    HTracker_funcTrack("tav_f", __func__, "%s, %s", uri, payload);
    return TAV_ServiceCallWithCallback(uri, payload, nullptr, nullptr, SDL_TRUE);
}

int TAV_UnregisterServiceCallback(TAV_ServiceCallback callback) {
    HTracker_funcTrack("tav_f", __func__, "%p", reinterpret_cast<void*>(callback));
    for (int index = 0; index < g_openCalls.size();) {
        UserCallbackContext* call = openCall(index);
        if (call->callback != callback) {
            ++index;
            continue;
        }
        NApp_GetKSCaller()->ksCancelCall(call->token);
        g_openCalls.remove(index);
        delete call;
    }
    return TAV_NOERROR;
}

void TAV_ServicesQuit() {
    HTracker_funcTrack("tav_f", __func__, "--");
    for (int index = 0; index < g_openCalls.size(); ++index) {
        delete openCall(index);
    }
    g_openCalls.clear();
}
