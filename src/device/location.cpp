#include "device/location.h"

#include <cstdio>

#include "core/events.h"
#include "core/handles.h"
#include "core/report.h"
#include "core/status.h"
#include "core/value.h"
#include "platform/htracker.h"
#include "services/bus.h"

namespace {

constexpr char kTrackingUri[] = "vire://com.vire.location/startTracking";
constexpr char kTrackingPayload[] = "{ \"subscribe\": %s }";

constexpr char kErrorCode[] = "errorCode";
constexpr int kFix = 0;
constexpr int kNothingNew = 4;
constexpr int kServiceFailed = 5;

struct Member {
    const char* name;
    double TAV_Location::*value;
};

constexpr Member kMembers[] = {
    {"latitude", &TAV_Location::latitude},         {"longitude", &TAV_Location::longitude},
    {"altitude", &TAV_Location::altitude},         {"horizAccuracy", &TAV_Location::horizAccuracy},
    {"vertAccuracy", &TAV_Location::vertAccuracy}, {"heading", &TAV_Location::heading},
    {"velocity", &TAV_Location::velocity},
};

bool validateValue(const HJson* reply, const char* name) {
    if (HJson_valueExists(reply, name)) {
        return true;
    }
    HTracker_funcTrack("tav_e", __func__, "value not present: %s", name);
    return false;
}

// Reads every member, so that the trace names each missing one.
bool isComplete(const HJson* reply) {
    bool complete = true;
    for (const Member& member : kMembers) {
        complete = validateValue(reply, member.name) && complete;
    }
    return complete;
}

void readFix(const HJson* reply, TAV_Location* location) {
    for (const Member& member : kMembers) {
        location->*member.value = HJson_getDouble(reply, member.name);
    }
}

}  // namespace

namespace tav {

gpsCallbackContext g_GPSContext;

gpsCallbackContext::gpsCallbackContext() {
    HTracker_funcTrack("tav_f", __func__, "--");
    callId = kNoCall;
    clear();
}

void gpsCallbackContext::clear() {
    HTracker_funcTrack("tav_f", __func__, "--");
    tracking = 0;
    failure = TAV_NOERROR;
    location = {-1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0};
}

// cppcheck-suppress constParameter; the bus prescribes the type
void gpsCallback(int /*token*/, const char* reply, void* context) {
    HTracker_funcTrack("tav_f", __func__, "%s", reply);
    gpsCallbackContext& state = g_GPSContext;
    if (context != &state) {
        HTracker_funcTrack("tav_e", __func__,
                           "gps callback received, but context is wrong. ignoring.");
        return;
    }
    if (state.tracking == 0) {
        return;
    }
    const HJsonPtr json(HJson_create(reply));
    if (json == nullptr) {
        HTracker_funcTrack("tav_e", __func__, "could not parse gps reply");
        state.failure = TAV_EOTHER;
        pushUserEvent(TAV_EVENT_LOCATION_FAILURE, &state.failure);
        return;
    }
    if (!HJson_valueExists(json.get(), kErrorCode)) {
        return;
    }
    const int errorCode = HJson_getInt(json.get(), kErrorCode);
    if (errorCode == kNothingNew) {
        return;
    }
    if (errorCode == kServiceFailed) {
        state.failure = TAV_ELOCATIONSERVICE;
    } else if (errorCode != kFix) {
        HTracker_funcTrack("tav_e", __func__, "unknown error returned from gps: %d", errorCode);
        state.failure = TAV_EOTHER;
    } else if (state.failure == TAV_NOERROR && !isComplete(json.get())) {
        HTracker_funcTrack("tav_e", __func__, "reply from gps missing parameters");
        state.failure = TAV_EOTHER;
    } else if (state.failure == TAV_NOERROR) {
        readFix(json.get(), &state.location);
        pushUserEvent(TAV_EVENT_LOCATION, &state);
    }
    if (state.failure != TAV_NOERROR) {
        pushUserEvent(TAV_EVENT_LOCATION_FAILURE, &state.failure);
    }
}

}  // namespace tav

int TAV_EnableLocationTracking(SDL_bool activate) {
    const Sint32 tracking = tav::rawValue(activate);
    HTracker_funcTrack("tav_f", __func__, "%s", tav::trueOrFalse(tracking));
    tav::gpsCallbackContext& state = tav::g_GPSContext;
    HKSCaller* bus = NApp_GetKSCaller();
    if (tracking == 0) {
        bus->ksCancelCall(state.callId);
        state.callId = tav::kNoCall;
        state.tracking = 0;
        state.failure = TAV_NOERROR;
        return TAV_NOERROR;
    }
    char payload[256];
    std::snprintf(payload, sizeof payload, kTrackingPayload, getBooleanString(SDL_TRUE));
    state.callId = bus->ksCallWithSubscription(kTrackingUri, payload, tav::kForLibrary,
                                               tav::gpsCallback, &state);
    if (state.callId == tav::kNoCall) {
        return TAV_FAIL(__func__, TAV_ECONNECTION, tav::kServiceUnreachable);
    }
    state.tracking = tracking;
    state.failure = TAV_NOERROR;
    return TAV_NOERROR;
}

int TAV_GetLocation(TAV_Location* location) {
    HTracker_funcTrack("tav_f", __func__, "%p", static_cast<void*>(location));
    if (location == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "location is NULL");
    }
    const tav::gpsCallbackContext& state = tav::g_GPSContext;
    if (state.tracking == 0) {
        return TAV_FAIL(__func__, TAV_UNINIT,
                        "GPS tracking is not on (call TAV_EnableLocationTracking)");
    }
    if (state.failure != TAV_NOERROR) {
        return TAV_FAIL(__func__, state.failure, "GPS failure");
    }
    *location = state.location;
    return TAV_NOERROR;
}
