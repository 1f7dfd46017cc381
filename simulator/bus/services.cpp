#include "simulator/bus/services.h"

#include <glib.h>

#include <functional>
#include <map>

#include "simulator/bus/location.h"
#include "simulator/bus/payment.h"
#include "simulator/device/journal.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr int kHighestPort = 65535;

Answer vibrate(const dom::object& request) {
    static int run = 0;
    const std::optional<int64_t> period = numberMember(request, "period", 0, INT64_MAX);
    const std::optional<int64_t> duration = numberMember(request, "duration", 0, INT64_MAX);
    if (!period || !duration) {
        return failure("a vibration needs a period and a duration in milliseconds");
    }
    setState("vibrator", "on, period " + std::to_string(*period) + " ms");
    schedule(after(now(), *duration), [current = ++run] {
        if (current == run) {
            setState("vibrator", "off");
        }
    });
    return success();
}

Answer setFirewallRule(const dom::object& request) {
    const std::string protocol = textMember(request, "protocol");
    const std::optional<int64_t> port = numberMember(request, "port", 1, kHighestPort);
    for (const char* known : {"tcp", "udp"}) {
        if (port && g_ascii_strcasecmp(protocol.c_str(), known) == 0) {
            setState("port " + std::to_string(*port) + " " + known,
                     flagMember(request, "isEnabled") ? "open" : "closed");
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
    const std::string id = textMember(request, "id");
    if (id.empty()) {
        return failure("no application id");
    }
    setState("launched", id);
    return success();
}

using Handler = std::function<Answer(const dom::object&)>;

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

}  // namespace

Answer deviceServiceAnswer(const std::string& uri, const std::string& payload) {
    const auto handler = handlers().find(uri);
    if (handler == handlers().end()) {
        return failure("no such service: " + uri);
    }
    dom::parser parser;
    dom::object request;
    if (parser.parse(payload).get(request) != simdjson::SUCCESS) {
        JournalEntry("device", "request not understood")
            .member("uri", uri)
            .member("payload", payload);
        return failure("the payload is no JSON object");
    }
    return handler->second(request);
}

}  // namespace tavsim
