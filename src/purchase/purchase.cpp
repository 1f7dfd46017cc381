#include <strings.h>

#include <memory>
#include <new>
#include <tuple>

#include "core/handles.h"
#include "core/report.h"
#include "platform/htracker.h"
#include "services/blocking_call.h"
#include "services/bus.h"
#include "tav.h"

// The application releases each record, and the record owns its reply.
struct TAV_ItemCollection {
    tav::HStringPtr json;
};

struct TAV_ItemReceipt {
    tav::HStringPtr json;
};

struct TAV_ItemInfo {
    tav::HStringPtr json;
};

namespace {

constexpr char kAvailableItemsUri[] = "vire://com.vire.service.payment/getAvailableItems";
constexpr char kPurchaseUri[] = "vire://com.vire.service.payment/purchaseItem";
constexpr char kItemInfoUri[] = "vire://com.vire.service.payment/getItemInfo";
constexpr char kPendingPurchaseUri[] = "vire://com.vire.service.payment/getPendingPurchaseInfo";

constexpr char kAvailableItemsPayload[] =
    R"({"includePerishable":true, "includeNonPerishable":true, )"
    R"("includePurchased":true, "includeNotPurchased":true })";
constexpr char kPurchasePayload[] = R"({ "itemId": "%s", "quantity": %d })";
constexpr char kVendorPurchasePayload[] =
    R"({ "itemId": "%s", "quantity": %d, "vendorData": "%s" })";
constexpr char kItemInfoPayload[] =
    R"({ "itemId": "%s", "includeReceipts": true, "maxReceipts": %d })";
constexpr char kPendingPurchasePayload[] = R"({ "orderNo": "%s" })";

constexpr char kReturnValue[] = "returnValue";

constexpr int kTimeoutMs = 15000;
constexpr int kNoTimeout = 0;
constexpr int kQuantity = 1;
constexpr int kMaxReceipts = 16;

constexpr char kItemIdMissing[] = "itemID is NULL";
constexpr char kCollectionMissing[] = "itemCollectionInfo is NULL";
constexpr char kReceiptMissing[] = "receipt is NULL";
constexpr char kItemInfoMissing[] = "itemInfo is NULL";

bool isFalse(const HString* value) {
    return strcasecmp(HString_toStr(value), "false") == 0;
}

// A reply without the value, or whose value cannot be read, counts as a success.
tav::HStringPtr dispatch(const char* uri, const char* payload, bool waitWithoutTimeOut) {
    const int timeoutMs = waitWithoutTimeOut ? kNoTimeout : kTimeoutMs;
    tav::HStringPtr reply = tav::blockingKSCall(uri, payload, tav::kForApplication, timeoutMs);
    if (reply == nullptr) {
        return nullptr;
    }
    const char* text = HString_toStr(reply.get());
    const tav::HStringPtr value(HJson_getValueFromStr(text, kReturnValue));
    if (value != nullptr && isFalse(value.get())) {
        return TAV_FAIL(__func__, nullptr, "Failure on dispatch: %s", text);
    }
    return reply;
}

template <typename Record>
Record* request(const char* function, const char* uri, const char* payload,
                bool waitWithoutTimeOut) {
    // Allocated first: a purchase must not be lost because memory is exhausted.
    std::unique_ptr<Record> record(new (std::nothrow) Record);
    if (record == nullptr) {
        return TAV_FAIL(function, nullptr, tav::kNoString);
    }
    record->json = dispatch(uri, payload, waitWithoutTimeOut);
    return record->json != nullptr ? record.release() : nullptr;
}

template <typename Record>
Record* request(const char* function, const char* uri, const tav::HStringPtr& payload,
                bool waitWithoutTimeOut) {
    if (payload == nullptr) {
        return TAV_FAIL(function, nullptr, tav::kNoString);
    }
    return request<Record>(function, uri, HString_toStr(payload.get()), waitWithoutTimeOut);
}

}  // namespace

TAV_ItemCollection* TAV_GetAvailableItems(void) {
    return request<TAV_ItemCollection>(__func__, kAvailableItemsUri, kAvailableItemsPayload, false);
}

TAV_ItemReceipt* TAV_PurchaseItem(const char* itemID, int qty, const char* vendorData) {
    if (itemID == nullptr) {
        return TAV_FAIL(__func__, nullptr, kItemIdMissing);
    }
    if (qty != kQuantity) {
        return TAV_FAIL(__func__, nullptr, "qty must be set to 1");
    }
    const tav::HStringPtr payload =
        vendorData != nullptr
            ? tav::formatPayload(kVendorPurchasePayload, itemID, kQuantity, vendorData)
            : tav::formatPayload(kPurchasePayload, itemID, kQuantity);
    return request<TAV_ItemReceipt>(__func__, kPurchaseUri, payload, true);
}

TAV_ItemInfo* TAV_GetItemInfo(const char* itemID) {
    if (itemID == nullptr) {
        return TAV_FAIL(__func__, nullptr, kItemIdMissing);
    }
    const tav::HStringPtr payload = tav::formatPayload(kItemInfoPayload, itemID, kMaxReceipts);
    return request<TAV_ItemInfo>(__func__, kItemInfoUri, payload, false);
}

TAV_ItemReceipt* TAV_GetPendingPurchaseInfo(const char* orderNo) {
    if (orderNo == nullptr) {
        return TAV_FAIL(__func__, nullptr, "orderNo is NULL");
    }
    const tav::HStringPtr payload = tav::formatPayload(kPendingPurchasePayload, orderNo);
    return request<TAV_ItemReceipt>(__func__, kPendingPurchaseUri, payload, false);
}

const char* TAV_GetItemCollectionJSON(const TAV_ItemCollection* itemCollectionInfo) {
    return itemCollectionInfo != nullptr ? HString_toStr(itemCollectionInfo->json.get())
                                         : TAV_FAIL(__func__, nullptr, kCollectionMissing);
}

const char* TAV_GetItemReceiptJSON(const TAV_ItemReceipt* receipt) {
    return receipt != nullptr ? HString_toStr(receipt->json.get())
                              : TAV_FAIL(__func__, nullptr, kReceiptMissing);
}

const char* TAV_GetItemJSON(const TAV_ItemInfo* itemInfo) {
    return itemInfo != nullptr ? HString_toStr(itemInfo->json.get())
                               : TAV_FAIL(__func__, nullptr, kItemInfoMissing);
}

void TAV_FreeItemCollection(TAV_ItemCollection* itemCollectionInfo) {
    if (itemCollectionInfo == nullptr) {
        std::ignore = TAV_FAIL(__func__, nullptr, kCollectionMissing);
    }
    delete itemCollectionInfo;
}

void TAV_FreeItemReceipt(TAV_ItemReceipt* receipt) {
    if (receipt == nullptr) {
        std::ignore = TAV_FAIL(__func__, nullptr, kReceiptMissing);
    }
    delete receipt;
}

void TAV_FreeItemInfo(TAV_ItemInfo* itemInfo) {
    if (itemInfo == nullptr) {
        std::ignore = TAV_FAIL(__func__, nullptr, kItemInfoMissing);
    }
    delete itemInfo;
}
