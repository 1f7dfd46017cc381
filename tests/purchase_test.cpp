#include <functional>

#include "device_test.h"
#include "services.h"

namespace {

using tavtest::Requests;
using testing::ElementsAre;
using testing::IsEmpty;

#define PAYMENT "vire://com.vire.service.payment/"

// What a request came to: the text of its record, which is released, or "null".
template <typename Record>
std::string take(Record* record, const char* (*text)(const Record*), void (*release)(Record*)) {
    if (record == nullptr) {
        return "null";
    }
    const std::string result = text(record);
    EXPECT_EQ(result, text(record));
    release(record);
    return result;
}

std::string take(TAV_ItemCollection* items) {
    return take(items, TAV_GetItemCollectionJSON, TAV_FreeItemCollection);
}

std::string take(TAV_ItemReceipt* receipt) {
    return take(receipt, TAV_GetItemReceiptJSON, TAV_FreeItemReceipt);
}

std::string take(TAV_ItemInfo* info) {
    return take(info, TAV_GetItemJSON, TAV_FreeItemInfo);
}

struct Call {
    const char* function;
    std::function<std::string()> take;
    tavtest::Request request;
    bool timesOut;
};

const Call kCalls[] = {
    {"TAV_GetAvailableItems",
     [] { return take(TAV_GetAvailableItems()); },
     {PAYMENT "getAvailableItems",
      R"({"includePerishable":true, "includeNonPerishable":true, "includePurchased":true, "includeNotPurchased":true })"},
     true},
    {"TAV_PurchaseItem",
     [] { return take(TAV_PurchaseItem("sword \"%d\"", 1, nullptr)); },
     {PAYMENT "purchaseItem", R"({ "itemId": "sword "%d"", "quantity": 1 })"},
     false},
    {"TAV_PurchaseItem",
     [] { return take(TAV_PurchaseItem("", 1, "")); },
     {PAYMENT "purchaseItem", R"({ "itemId": "", "quantity": 1, "vendorData": "" })"},
     false},
    {"TAV_GetItemInfo",
     [] { return take(TAV_GetItemInfo("shield")); },
     {PAYMENT "getItemInfo",
      R"({ "itemId": "shield", "includeReceipts": true, "maxReceipts": 16 })"},
     true},
    {"TAV_GetPendingPurchaseInfo",
     [] { return take(TAV_GetPendingPurchaseInfo("17")); },
     {PAYMENT "getPendingPurchaseInfo", R"({ "orderNo": "17" })"},
     true},
};

class PurchaseTest : public tavtest::DeviceTest {
protected:
    // Every payment service keeps its requests and gives this reply after the delay.
    void begin(sim::Reply reply, int delay = 0) {
        sim::Profile profile;
        requests.clear();
        for (const Call& call : kCalls) {
            sim::Service& service = profile.services[call.request.uri];
            service = tavtest::keepingService(requests, reply);
            service.delay = delay;
        }
        startDevice(profile);
    }

    Requests requests;
};

TEST_F(PurchaseTest, RequestsGoOutInTheApplicationsNameAndBringTheReply) {
    for (const Call& call : kCalls) {
        SCOPED_TRACE(call.request.payload);
        begin("{\"returnValue\":true, \"x\":\"\xff\"} ");
        EXPECT_EQ(call.take(), "{\"returnValue\":true, \"x\":\"\xff\"} ");
        EXPECT_THAT(requests, ElementsAre(call.request));
        EXPECT_EQ(tavtest::optionsSent(device), std::set{false});
        EXPECT_THAT(trace(), testing::Not(testing::Contains(testing::StartsWith("tav_f"))));
    }
}

TEST_F(PurchaseTest, OnlyAPurchaseWaitsWithoutLimit) {
    for (const Call& call : kCalls) {
        SCOPED_TRACE(call.request.payload);
        begin("{}", 100000);
        EXPECT_EQ(call.take(), call.timesOut ? "null" : "{}");
        EXPECT_EQ(device.now(), call.timesOut ? 15000 : 100050);
        EXPECT_THAT(device.openCalls(), IsEmpty());
        if (call.timesOut) {
            expectFailure("blockingKSCall", "Timed out waiting for response to call");
        }
    }
}

TEST_F(PurchaseTest, AReturnValueThatReadsFalseIsAFailure) {
    const std::string padding(3 << 20, 'x');
    const std::string failures[] = {R"({"returnValue":false,"errorText":"no funds %s"})",
                                    R"({"returnValue":"FalsE"})",
                                    R"({"returnValue":false,"pad":")" + padding + "\"}"};
    for (const std::string& reply : failures) {
        begin(reply);
        EXPECT_EQ(kCalls[0].take(), "null");
        EXPECT_EQ(trace().back(), "tav_e dispatch Failure on dispatch: " + reply);
        // SDL itself cuts a long text.
        const std::string error = "Failure on dispatch: " + reply;
        EXPECT_EQ(std::string(SDL_GetError()).substr(0, 60), error.substr(0, 60));
    }
    const std::string successes[] = {R"({"returnValue":true})", R"({"returnValue":"falsey"})",
                                     R"({"returnValue":""})",   R"({"returnValue":0})",
                                     R"({"returnValue":null})", R"({"errorCode":-3})",
                                     "returnValue false",       "",
                                     std::string(100000, '['),  padding};
    for (const std::string& reply : successes) {
        begin(reply);
        EXPECT_EQ(kCalls[0].take(), reply);
    }
    begin(std::nullopt);
    EXPECT_EQ(kCalls[0].take(), "");
}

TEST_F(PurchaseTest, LeavesNothingBehindWhenMemoryOrTheBusFails) {
    for (const Call& call : kCalls) {
        SCOPED_TRACE(call.request.payload);
        begin("{}");
        call.take();
        const int payloadSteps = call.function == kCalls[0].function ? 0 : 2;
        for (int nth = 1; nth <= payloadSteps + 2; ++nth) {
            begin("{}");
            device.failNth(sim::Fault::StringAllocation, nth);
            EXPECT_EQ(call.take(), "null");
            expectFailure(nth <= payloadSteps ? call.function : "blockingKSCall",
                          "Could not allocate HString");
            EXPECT_EQ(requests.size(), nth == payloadSteps + 2 ? 1u : 0u);
            EXPECT_THAT(device.openCalls(), IsEmpty());
        }
        begin("{}");
        device.failNth(sim::Fault::Dispatch, 1);
        EXPECT_EQ(call.take(), "null");
        expectFailure("blockingKSCall", "failed to dispatch call");
        EXPECT_EQ(device.now(), 0) << "it must not wait";
    }
}

TEST_F(PurchaseTest, RefusesBadArgumentsAndSendsNothing) {
    begin("{}");
    EXPECT_EQ(TAV_PurchaseItem(nullptr, 2, nullptr), nullptr);
    expectFailure("TAV_PurchaseItem", "itemID is NULL");
    for (const int quantity : {0, 2, -1}) {
        EXPECT_EQ(TAV_PurchaseItem("sword", quantity, nullptr), nullptr);
        expectFailure("TAV_PurchaseItem", "qty must be set to 1");
    }
    EXPECT_EQ(TAV_GetItemInfo(nullptr), nullptr);
    expectFailure("TAV_GetItemInfo", "itemID is NULL");
    EXPECT_EQ(TAV_GetPendingPurchaseInfo(nullptr), nullptr);
    expectFailure("TAV_GetPendingPurchaseInfo", "orderNo is NULL");
    EXPECT_THAT(requests, IsEmpty());
}

TEST_F(PurchaseTest, RefusesNullRecords) {
    EXPECT_EQ(TAV_GetItemCollectionJSON(nullptr), nullptr);
    expectFailure("TAV_GetItemCollectionJSON", "itemCollectionInfo is NULL");
    EXPECT_EQ(TAV_GetItemReceiptJSON(nullptr), nullptr);
    expectFailure("TAV_GetItemReceiptJSON", "receipt is NULL");
    EXPECT_EQ(TAV_GetItemJSON(nullptr), nullptr);
    expectFailure("TAV_GetItemJSON", "itemInfo is NULL");
    TAV_FreeItemCollection(nullptr);
    expectFailure("TAV_FreeItemCollection", "itemCollectionInfo is NULL");
    TAV_FreeItemReceipt(nullptr);
    expectFailure("TAV_FreeItemReceipt", "receipt is NULL");
    TAV_FreeItemInfo(nullptr);
    expectFailure("TAV_FreeItemInfo", "itemInfo is NULL");
}

}  // namespace
