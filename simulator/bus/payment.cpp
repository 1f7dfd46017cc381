#include "simulator/bus/payment.h"

#include "simulator/bus/bus.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr int kDelay = 200;
constexpr int kFirstOrder = 1001;

void writeItem(base::JsonWriter& reply, const Item& item) {
    reply.beginObject()
        .member("itemId", item.id)
        .member("title", item.title)
        .member("price", item.price)
        .endObject();
}

const Item* findItem(const std::string& id) {
    for (const Item& item : profile().items) {
        if (item.id == id) {
            return &item;
        }
    }
    return nullptr;
}

Answer noSuchItem() {
    return failure("no such item", kDelay);
}

std::string orderNumber(const Item& item) {
    return "A-" + std::to_string(kFirstOrder + (&item - profile().items.data()));
}

Answer receipt(const Item& item) {
    return oneReply(successReply()
                        .member("orderNo", orderNumber(item))
                        .member("itemId", item.id)
                        .member("quantity", 1)
                        .member("state", "purchased")
                        .endObject(),
                    kDelay);
}

}  // namespace

Answer availableItems(const dom::object&) {
    base::JsonWriter reply = successReply();
    reply.key("items").beginArray();
    for (const Item& item : profile().items) {
        writeItem(reply, item);
    }
    return oneReply(reply.endArray().endObject(), kDelay);
}

Answer itemInfo(const dom::object& request) {
    const Item* item = findItem(textMember(request, "itemId"));
    if (item == nullptr) {
        return noSuchItem();
    }
    base::JsonWriter reply = successReply();
    writeItem(reply.key("item"), *item);
    return oneReply(reply.key("receipts").beginArray().endArray().endObject(), kDelay);
}

Answer purchaseItem(const dom::object& request) {
    const Item* item = findItem(textMember(request, "itemId"));
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
    const std::string orderNo = textMember(request, "orderNo");
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
