// The platform's bus caller: the application's requests, and the replies to them.
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include "linux/bus/connection.h"
#include "linux/bus/introspection.h"
#include "linux/bus/pump.h"
#include "linux/bus/service_call.h"
#include "linux/host/in_front.h"
#include "linux/services/services.h"
#include "platform/hkscaller.h"

namespace tavlinux {
namespace {

enum class Kind { OneWay, OneReply, Subscription };

struct OpenCall {
    Kind kind;
    HKSReplyFunction replyFunction;
    void* context;
    Stop stop;
};

std::map<int, OpenCall>& openCalls() {
    static auto& calls = *new std::map<int, OpenCall>;
    return calls;
}

Dispatched refusePayment(const simdjson::dom::object&, const Answer& answer) {
    answer(failure("there is no shop on this system"));
    return Stop();
}

using Service = Dispatched (*)(const simdjson::dom::object&, const Answer&);

// The device's services, which have other names on this system or do not exist.
const std::map<std::string, Service>& services() {
    static const auto& table = *new std::map<std::string, Service>{
        {"vire://com.vire.vibrate/vibrate", vibrate},
        {"kora://com.vire.firewall/portCtrl", setFirewallRule},
        {"vire://com.vire.mediad/service/pauseAllMediaPlayback", pauseMedia},
        {"vire://com.vire.applicationManager/launch", launchApplication},
        {"vire://com.vire.location/startTracking", startTracking},
        {"vire://com.vire.service.payment/getAvailableItems", refusePayment},
        {"vire://com.vire.service.payment/getItemInfo", refusePayment},
        {"vire://com.vire.service.payment/purchaseItem", refusePayment},
        {"vire://com.vire.service.payment/getPendingPurchaseInfo", refusePayment},
    };
    return table;
}

Dispatched callDeviceService(Service service, const std::string& payload, const Answer& answer) {
    simdjson::dom::parser parser;
    simdjson::dom::object request;
    if (parser.parse(payload).get(request) != simdjson::SUCCESS) {
        answer(failure("the payload is no JSON object"));
        return Stop();
    }
    return service(request, answer);
}

void close(int token) {
    const auto found = openCalls().find(token);
    if (found == openCalls().end()) {
        return;
    }
    const Stop stop = std::move(found->second.stop);
    openCalls().erase(found);
    if (stop) {
        stop();
    }
}

// The reply function may cancel this call or start others.
void deliverReply(int token, const std::string& reply) {
    const auto found = openCalls().find(token);
    if (found == openCalls().end()) {
        return;
    }
    const HKSReplyFunction replyFunction = found->second.replyFunction;
    void* given = found->second.context;
    if (found->second.kind == Kind::OneReply) {
        close(token);
    }
    replyFunction(token, reply.c_str(), given);
}

// At exit. The application's last requests are still sent, but the wait for that is bounded.
void sendWhatWaits() {
    serveUntil([] { return !isDescribing(); });
    flushConnections();
}

int dispatch(Kind kind, const char* uri, const char* payload, HKSReplyFunction replyFunction,
             void* context) {
    static int lastToken = 0;
    if (!isInFront() || !isApplicationThread()) {
        return -1;
    }
    if (lastToken == 0) {
        std::atexit(sendWhatWaits);
    }
    const int token = ++lastToken;
    const std::string address = uri != nullptr ? uri : "";
    const std::string text = payload != nullptr ? payload : "";
    const bool isAnswered = kind != Kind::OneWay && replyFunction != nullptr;
    Answer answer = [token, isAnswered](const std::string& reply) {
        if (isAnswered) {
            deliver([token, reply] { deliverReply(token, reply); });
        }
    };
    const auto service = services().find(address);
    Dispatched dispatched =
        service != services().end()
            ? callDeviceService(service->second, text, answer)
            : callService(address, text, kind == Kind::Subscription, isAnswered ? answer : nullptr);
    if (!dispatched) {
        return -1;
    }
    if (isAnswered) {
        openCalls().emplace(token, OpenCall{kind, replyFunction, context, std::move(*dispatched)});
    } else if (*dispatched) {
        (*dispatched)();  // without a reply function, nobody could end it
    }
    return token;
}

}  // namespace
}  // namespace tavlinux

int HKSCaller::ksCall(const char* uri, const char* payload, bool) {
    return tavlinux::dispatch(tavlinux::Kind::OneWay, uri, payload, nullptr, nullptr);
}

int HKSCaller::ksCallWithResponse(const char* uri, const char* payload, bool,
                                  HKSReplyFunction replyFunction, void* context) {
    return tavlinux::dispatch(tavlinux::Kind::OneReply, uri, payload, replyFunction, context);
}

int HKSCaller::ksCallWithSubscription(const char* uri, const char* payload, bool,
                                      HKSReplyFunction replyFunction, void* context) {
    return tavlinux::dispatch(tavlinux::Kind::Subscription, uri, payload, replyFunction, context);
}

void HKSCaller::ksCancelCall(int token) {
    if (tavlinux::isApplicationThread()) {
        tavlinux::close(token);
    }
}
