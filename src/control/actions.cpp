#include <cstdio>
#include <utility>

#include "core/handles.h"
#include "core/report.h"
#include "core/status.h"
#include "core/value.h"
#include "platform/htracker.h"
#include "services/bus.h"
#include "tav.h"

namespace {

constexpr char kVibrateUri[] = "vire://com.vire.vibrate/vibrate";
constexpr char kFirewallUri[] = "kora://com.vire.firewall/portCtrl";
constexpr char kPauseMediaUri[] = "vire://com.vire.mediad/service/pauseAllMediaPlayback";
constexpr char kLaunchUri[] = "vire://com.vire.applicationManager/launch";

constexpr char kVibratePayload[] = R"({"period":%d, "duration":%d})";
constexpr char kTcpLabel[] = "tavportT_%d";
constexpr char kUdpLabel[] = "tavportU_%d";
constexpr char kTcpPayload[] =
    R"({"label": "%s", "protocol": "TCP", "port": %d, "isDestinationPort": true, "isEnabled": %s})";
constexpr char kUdpPayload[] =
    R"({"label": "%s", "protocol": "UDP", "port": %d, "isDestinationPort": true, "isEnabled": %s})";
constexpr char kPauseMediaPayload[] = "{}";
constexpr char kBrowserPayload[] =
    R"({ "id": "com.vire.app.browser", "params": {"target": "%s" } })";
constexpr char kEmailPayload[] =
    R"({ "id": "com.vire.app.email", "params": {"summary": "%s", "text": "%s" } })";
constexpr char kEmailToHead[] =
    R"({ "id": "com.vire.app.email", "params": {"summary": "%s", "text": "%s", "recipients": [ )";
constexpr char kRecipient[] = R"(%s{"type":"email", "role":1, "value":"%s"})";
constexpr char kEmailToTail[] = "] } }";

constexpr int kHighestReservedPort = 1024;

int sendFirewallRule(const char* function, const char* labelFormat, const char* payloadFormat,
                     int port, bool enable) {
    char label[32];
    std::snprintf(label, sizeof label, labelFormat, port);
    char payload[256];
    std::snprintf(payload, sizeof payload, payloadFormat, label, port,
                  getBooleanString(tav::sdlBool(enable)));
    return tav::sendRequest(function, kFirewallUri, payload);
}

int launch(const char* function, const tav::HStringPtr& payload) {
    if (payload == nullptr) {
        return TAV_FAIL(function, TAV_ECONNECTION, tav::kServiceUnreachable);
    }
    return tav::sendRequest(function, kLaunchUri, HString_toStr(payload.get()));
}

int checkMessage(const char* function, const char* subject, const char* body) {
    if (subject == nullptr) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "Subject is null");
    }
    if (body == nullptr) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "Body is null");
    }
    return TAV_NOERROR;
}

int checkRecipients(const char* function, int count, const char* const* recipients) {
    if (recipients == nullptr) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "recipients is null");
    }
    for (int index = 0; index < count; ++index) {
        if (recipients[index] == nullptr) {
            return TAV_FAIL(function, TAV_INVALIDINPUT, "bad recipient");
        }
        HTracker_funcTrack("tav_f", function, "Recipient %d: %s", index, recipients[index]);
    }
    return TAV_NOERROR;
}

tav::HStringPtr formatEmailTo(const char* subject, const char* body, int count,
                              const char* const* recipients) {
    tav::HStringPtr payload = tav::formatPayload(kEmailToHead, subject, body);
    bool complete = payload != nullptr;
    for (int index = 0; complete && index < count; ++index) {
        const char* separator = index == 0 ? "" : ",";
        complete = HString_append(payload.get(), kRecipient, separator, recipients[index]) != 0;
    }
    complete = complete && HString_append(payload.get(), kEmailToTail) != 0;
    return complete ? std::move(payload) : nullptr;
}

}  // namespace

int TAV_Vibrate(int periodMS, int durationMS) {
    HTracker_funcTrack("tav_f", __func__, "%d, %d", periodMS, durationMS);
    if (durationMS < 0) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "durationMS must be >= 0");
    }
    if (periodMS < 0) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "periodMS must be >= 0");
    }
    if (durationMS == 0) {
        return TAV_NOERROR;
    }
    char payload[256];
    std::snprintf(payload, sizeof payload, kVibratePayload, periodMS, durationMS);
    return tav::sendRequest(__func__, kVibrateUri, payload);
}

int TAV_SetFirewallPortStatus(int port, SDL_bool enable) {
    const Sint32 enabled = tav::rawValue(enable);
    HTracker_funcTrack("tav_f", __func__, "%d, %s", port, tav::trueOrFalse(enabled));
    if (port <= kHighestReservedPort) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "port must be greater than 1024");
    }
    const int result = sendFirewallRule(__func__, kTcpLabel, kTcpPayload, port, enabled != 0);
    if (result != TAV_NOERROR) {
        return result;
    }
    return sendFirewallRule(__func__, kUdpLabel, kUdpPayload, port, enabled != 0);
}

int TAV_NotifyMusicPlaying(SDL_bool musicPlaying) {
    const Sint32 playing = tav::rawValue(musicPlaying);
    HTracker_funcTrack("tav_f", __func__, "%s", tav::trueOrFalse(playing));
    if (playing == 0) {
        return TAV_NOERROR;
    }
    return tav::sendRequest(__func__, kPauseMediaUri, kPauseMediaPayload);
}

int TAV_LaunchBrowser(const char* url) {
    if (url == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "NULL URL sent to TAV_LaunchBrowser");
    }
    HTracker_funcTrack("tav_f", __func__, "%s", url);
    return launch(__func__, tav::formatPayload(kBrowserPayload, url));
}

int TAV_LaunchEmail(const char* subject, const char* body) {
    HTracker_funcTrack("tav_f", __func__, "%s, %s", subject, body);
    if (const int failure = checkMessage(__func__, subject, body); failure != TAV_NOERROR) {
        return failure;
    }
    return launch(__func__, tav::formatPayload(kEmailPayload, subject, body));
}

int TAV_LaunchEmailTo(const char* subject, const char* body, int numRecipients,
                      const char** recipients) {
    HTracker_funcTrack("tav_f", __func__, "%s, %s", subject, body);
    if (numRecipients <= 0) {
        return TAV_LaunchEmail(subject, body);
    }
    if (const int failure = checkMessage(__func__, subject, body); failure != TAV_NOERROR) {
        return failure;
    }
    if (const int failure = checkRecipients(__func__, numRecipients, recipients);
        failure != TAV_NOERROR) {
        return failure;
    }
    return launch(__func__, formatEmailTo(subject, body, numRecipients, recipients));
}
