#include "simulator/bus/services.h"

#include <glib.h>

#include <map>

#include "base/json/text.h"
#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"
#include "simulator/device/journal.h"
#include "simulator/device/running.h"
#include "simulator/device/service_reader.h"
#include "simulator/device/state.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr int kHighestPort = 65535;

Answer success() {
    return {{base::jsonObject("returnValue", true)}};
}

Answer vibrate(const dom::object& request) {
    static int run = 0;
    const auto period = base::memberOf<int64_t>(request, "period");
    const auto duration = base::memberOf<int64_t>(request, "duration");
    if (period.value_or(-1) < 0 || duration.value_or(-1) < 0) {
        return failure("a vibration needs a period and a duration in milliseconds");
    }
    setState("vibrator", "on, period " + std::to_string(*period) + " ms");
    schedule(after(now(), *duration), "state", [current = ++run] {
        if (current == run) {
            setState("vibrator", "off");
        }
    });
    return success();
}

Answer setFirewallRule(const dom::object& request) {
    const std::string protocol = base::textMember(request, "protocol");
    const int64_t port = base::memberOf<int64_t>(request, "port").value_or(0);
    const bool isPort = port > 0 && port <= kHighestPort;
    for (const char* known : {"tcp", "udp"}) {
        if (isPort && g_ascii_strcasecmp(protocol.c_str(), known) == 0) {
            setState("port " + std::to_string(port) + " " + known,
                     base::flagMember(request, "isEnabled") ? "open" : "closed");
            return success();
        }
    }
    return failure("a rule needs a protocol, TCP or UDP, and a port");
}

Answer pauseMedia(const dom::object&) {
    setState("media", "paused");
    return success();
}

Answer launch(const dom::object& request) {
    const std::string id = base::textMember(request, "id");
    if (id.empty()) {
        return failure("no application id");
    }
    setState("launched", id);
    return success();
}

using Handler = Answer (*)(const dom::object&);

const std::map<std::string, Handler>& handlers() {
    static const auto& table = *new std::map<std::string, Handler>{
        {"vire://com.vire.vibrate/vibrate", vibrate},
        {"kora://com.vire.firewall/portCtrl", setFirewallRule},
        {"vire://com.vire.mediad/service/pauseAllMediaPlayback", pauseMedia},
        {"vire://com.vire.applicationManager/launch", launch},
        {kLocationUri, startTracking},
        {"vire://com.vire.service.payment/getAvailableItems", availableItems},
        {"vire://com.vire.service.payment/getItemInfo", itemInfo},
        {kPurchaseUri, purchaseItem},
        {"vire://com.vire.service.payment/getPendingPurchaseInfo", pendingPurchase},
    };
    return table;
}

std::string fixReply(const Fix& fix) {
    return base::jsonObject("errorCode", 0, "latitude", fix.latitude, "longitude", fix.longitude,
                            "altitude", fix.altitude, "horizAccuracy", fix.horizAccuracy,
                            "vertAccuracy", fix.vertAccuracy, "heading", fix.heading, "velocity",
                            fix.velocity);
}

std::string replyOf(const Report& report) {
    const Fix* fix = std::get_if<Fix>(&report);
    return fix != nullptr ? fixReply(*fix) : locationErrorReply(std::get<int>(report));
}

}  // namespace

Answer failure(const std::string& reason, int delay) {
    return {{errorReply(-1, reason)}, delay};
}

Answer deviceServiceAnswer(const std::string& uri, const std::string& payload) {
    const auto handler = handlers().find(uri);
    if (handler == handlers().end()) {
        return failure("no such service: " + uri);
    }
    dom::parser parser;
    dom::object request;
    if (parser.parse(payload).get(request) != simdjson::SUCCESS) {
        writeEntry("device", "request not understood", "uri", uri, "payload", payload);
        return failure("the payload is no JSON object");
    }
    return handler->second(request);
}

Answer startTracking(const simdjson::dom::object& /*request*/) {
    const std::optional<Report> report = beginTracking();
    return report ? Answer{{replyOf(*report)}} : Answer();
}

std::string locationErrorReply(int code) {
    return base::jsonObject("errorCode", code);
}

void announceLocation(const Report& report) {
    if (profileService(kLocationUri) != nullptr) {
        return;  // which replaces this service
    }
    for (const int token : openBusCalls(kLocationUri)) {
        deliverReply(token, replyOf(report));
    }
}

std::vector<std::string> deviceServiceUris() {
    std::vector<std::string> uris;
    for (const auto& [uri, handler] : handlers()) {
        uris.push_back(uri);
    }
    return uris;
}

}  // namespace tavsim
