// The payment service, which sells the items of the profile.
#include <algorithm>

#include "base/json/text.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/services.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr int kDelay = 200;
constexpr int kFirstOrder = 1001;

void writeItem(base::JsonWriter& reply, const Item& item) {
    reply.beginObject()
        .members("itemId", item.id, "title", item.title, "price", item.price)
        .endObject();
}

const Item* findItem(const std::string& id) {
    const std::vector<Item>& items = profile().items;
    const auto found = std::ranges::find(items, id, &Item::id);
    return found != items.end() ? &*found : nullptr;
}

Answer noSuchItem() {
    return failure("no such item", kDelay);
}

std::string orderNumber(const Item& item) {
    return "A-" + std::to_string(kFirstOrder + (&item - profile().items.data()));
}

Answer receipt(const Item& item) {
    return {{base::jsonObject("returnValue", true, "orderNo", orderNumber(item), "itemId", item.id,
                              "quantity", 1, "state", "purchased")},
            kDelay};
}

}  // namespace

Answer availableItems(const dom::object&) {
    base::JsonWriter reply;
    reply.beginObject().member("returnValue", true).key("items").beginArray();
    for (const Item& item : profile().items) {
        writeItem(reply, item);
    }
    return {{reply.endArray().endObject().take()}, kDelay};
}

Answer itemInfo(const dom::object& request) {
    const Item* item = findItem(base::textMember(request, "itemId"));
    if (item == nullptr) {
        return noSuchItem();
    }
    base::JsonWriter reply;
    reply.beginObject().member("returnValue", true);
    writeItem(reply.key("item"), *item);
    return {{reply.key("receipts").raw("[]").endObject().take()}, kDelay};
}

Answer purchaseItem(const dom::object& request) {
    const Item* item = findItem(base::textMember(request, "itemId"));
    if (item == nullptr) {
        return noSuchItem();
    }
    switch (item->purchase) {
    case Purchase::Silent:
        return {};
    case Purchase::Refused:
        return failure("the purchase was declined", kDelay);
    case Purchase::Succeeds:
        break;
    }
    setState("item " + item->id, "purchased");
    return receipt(*item);
}

Answer pendingPurchase(const dom::object& request) {
    const std::string orderNo = base::textMember(request, "orderNo");
    for (const Item& item : profile().items) {
        if (item.purchase == Purchase::Succeeds && orderNumber(item) == orderNo) {
            return receipt(item);
        }
    }
    return failure("no such order", kDelay);
}

void refuseOpenPurchases() {
    for (const int token : openBusCalls(kPurchaseUri)) {
        deliverReply(token, failure("the user left").replies.front());
    }
}

}  // namespace tavsim
