#include "simulator/bus/services.h"

#include <glib.h>
#include <simdjson.h>

#include <functional>
#include <map>

#include "simulator/device/clock.h"
#include "simulator/device/journal.h"
#include "simulator/device/queue.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr char kDone[] = R"({"returnValue":true})";
constexpr int kPaymentDelay = 200;

std::string failure(const std::string& text) {
    return R"({"returnValue":false,"errorCode":-1,"errorText":")" + escapedJson(text) + "\"}";
}

Answer oneReply(std::string text, int delay = 0) {
    return {{std::move(text)}, delay, 0};
}

std::string textMember(const dom::object& object, const char* name) {
    std::string_view text;
    return object[name].get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

int64_t integerMember(const dom::object& object, const char* name) {
    int64_t value = 0;
    return object[name].get(value) == simdjson::SUCCESS ? value : 0;
}

bool flagMember(const dom::object& object, const char* name) {
    bool value = false;
    return object[name].get(value) == simdjson::SUCCESS && value;
}

Answer vibrate(const dom::object& request) {
    static int run = 0;
    const Milliseconds duration = integerMember(request, "duration");
    const Milliseconds period = integerMember(request, "period");
    setState("vibrator", "on, period " + std::to_string(period) + " ms");
    schedule(after(now(), duration), [current = ++run] {
        if (current == run) {
            setState("vibrator", "off");
        }
    });
    return oneReply(kDone);
}

Answer setFirewallRule(const dom::object& request) {
    const std::string protocol = textMember(request, "protocol");
    const int64_t port = integerMember(request, "port");
    if (protocol.empty() || port < 1) {
        return oneReply(failure("a rule needs a protocol and a port"));
    }
    const std::unique_ptr<char, decltype(&g_free)> lower(g_ascii_strdown(protocol.c_str(), -1),
                                                         g_free);
    setState("port " + std::to_string(port) + " " + lower.get(),
             flagMember(request, "isEnabled") ? "open" : "closed");
    return oneReply(kDone);
}

Answer pauseMedia(const dom::object&) {
    setState("media", "paused");
    return oneReply(kDone);
}

Answer launch(const dom::object& request) {
    const std::string id = textMember(request, "id");
    if (id.empty()) {
        return oneReply(failure("no application id"));
    }
    setState("launched", id);
    return oneReply(kDone);
}

Answer startTracking(const dom::object&) {
    const LocationTrack& track = profile().location;
    Answer answer{{}, track.interval, track.interval};
    for (const Fix& fix : track.fixes) {
        answer.replies.emplace_back(fixReply(fix));
    }
    for (const int code : track.errors) {
        answer.replies.emplace_back("{\"errorCode\":" + std::to_string(code) + "}");
    }
    return answer;
}

std::string itemText(const Item& item) {
    return R"({"itemId":")" + escapedJson(item.id) + R"(","title":")" + escapedJson(item.title) +
           R"(","price":")" + escapedJson(item.price) + "\"}";
}

const Item* findItem(const std::string& id) {
    for (const Item& item : profile().items) {
        if (item.id == id) {
            return &item;
        }
    }
    return nullptr;
}

Answer availableItems(const dom::object&) {
    std::string items;
    for (const Item& item : profile().items) {
        items += items.empty() ? "" : ",";
        items += itemText(item);
    }
    return oneReply(R"({"returnValue":true,"items":[)" + items + "]}", kPaymentDelay);
}

Answer itemInfo(const dom::object& request) {
    const Item* item = findItem(textMember(request, "itemId"));
    if (item == nullptr) {
        return oneReply(failure("no such item"), kPaymentDelay);
    }
    return oneReply(R"({"returnValue":true,"item":)" + itemText(*item) + R"(,"receipts":[]})",
                    kPaymentDelay);
}

std::string receipt(const std::string& orderNo, const Item& item) {
    return R"({"returnValue":true,"orderNo":")" + orderNo + R"(","itemId":")" +
           escapedJson(item.id) + R"(","quantity":1,"state":"purchased"})";
}

std::string orderNumber(const Item& item) {
    const auto place = &item - profile().items.data();
    return "A-" + std::to_string(1001 + place);
}

Answer purchaseItem(const dom::object& request) {
    const Item* item = findItem(textMember(request, "itemId"));
    if (item == nullptr) {
        return oneReply(failure("no such item"), kPaymentDelay);
    }
    switch (item->purchase) {
    case Purchase::Silent:
        return {};
    case Purchase::Refused:
        return oneReply(failure("the purchase was declined"), kPaymentDelay);
    case Purchase::Succeeds:
        break;
    }
    setState("item " + item->id, "purchased");
    return oneReply(receipt(orderNumber(*item), *item), kPaymentDelay);
}

Answer pendingPurchase(const dom::object& request) {
    const std::string orderNo = textMember(request, "orderNo");
    for (const Item& item : profile().items) {
        if (item.purchase == Purchase::Succeeds && orderNumber(item) == orderNo) {
            return oneReply(receipt(orderNo, item), kPaymentDelay);
        }
    }
    return oneReply(failure("no such order"), kPaymentDelay);
}

const std::map<std::string, std::function<Answer(const dom::object&)>>& handlers() {
    static const auto& table =
        *new std::map<std::string, std::function<Answer(const dom::object&)>>{
            {"vire://com.vire.vibrate/vibrate", vibrate},
            {"kora://com.vire.firewall/portCtrl", setFirewallRule},
            {"vire://com.vire.mediad/service/pauseAllMediaPlayback", pauseMedia},
            {"vire://com.vire.applicationManager/launch", launch},
            {kLocationUri, startTracking},
            {"vire://com.vire.service.payment/getAvailableItems", availableItems},
            {"vire://com.vire.service.payment/getItemInfo", itemInfo},
            {"vire://com.vire.service.payment/purchaseItem", purchaseItem},
            {"vire://com.vire.service.payment/getPendingPurchaseInfo", pendingPurchase},
        };
    return table;
}

}  // namespace

std::string fixReply(const Fix& fix) {
    const auto member = [](const char* name, double value) {
        return std::string(",\"") + name + "\":" + jsonNumber(value);
    };
    return "{\"errorCode\":0" + member("latitude", fix.latitude) +
           member("longitude", fix.longitude) + member("altitude", fix.altitude) +
           member("horizAccuracy", fix.horizAccuracy) + member("vertAccuracy", fix.vertAccuracy) +
           member("heading", fix.heading) + member("velocity", fix.velocity) + "}";
}

Answer deviceServiceAnswer(const std::string& uri, const std::string& payload) {
    const auto handler = handlers().find(uri);
    if (handler == handlers().end()) {
        return oneReply(failure("no such service: " + uri));
    }
    dom::parser parser;
    dom::object request;
    if (parser.parse(payload).get(request) != simdjson::SUCCESS) {
        JournalEntry("device", "request not understood").text("uri", uri).text("payload", payload);
        return oneReply(failure("the payload is no JSON object"));
    }
    return handler->second(request);
}

}  // namespace tavsim
