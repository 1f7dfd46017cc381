#include <functional>

#include "device_test.h"
#include "services.h"

namespace {

using tavtest::take;
using testing::ElementsAre;
using testing::IsEmpty;

#define PAYMENT "vire://com.vire.service.payment/"

struct Call {
    std::function<std::string()> run;
    tavtest::Request request;
    bool timesOut;
};

const Call kCalls[] = {
    {[] { return take(TAV_GetAvailableItems()); },
     {PAYMENT "getAvailableItems",
      R"({"includePerishable":true, "includeNonPerishable":true, "includePurchased":true, "includeNotPurchased":true })"},
     true},
    {[] { return take(TAV_PurchaseItem("sword \"%d\"", 1, nullptr)); },
     {PAYMENT "purchaseItem", R"({ "itemId": "sword "%d"", "quantity": 1 })"},
     false},
    {[] { return take(TAV_PurchaseItem("", 1, "")); },
     {PAYMENT "purchaseItem", R"({ "itemId": "", "quantity": 1, "vendorData": "" })"},
     false},
    {[] { return take(TAV_GetItemInfo("shield")); },
     {PAYMENT "getItemInfo",
      R"({ "itemId": "shield", "includeReceipts": true, "maxReceipts": 16 })"},
     true},
    {[] { return take(TAV_GetPendingPurchaseInfo("17")); },
     {PAYMENT "getPendingPurchaseInfo", R"({ "orderNo": "17" })"},
     true},
};

class PurchaseTest : public tavtest::DeviceTest {
protected:
    // Every payment service keeps its requests and gives this reply after the delay.
    void begin(tavsim::Reply reply, int delay = 0) {
        tavsim::Profile profile;
        requests.clear();
        for (const Call& call : kCalls) {
            tavsim::Service& service = profile.services[call.request.first];
            service = tavtest::keepingService(requests, reply);
            service.delay = delay;
        }
        startDevice(profile);
    }

    // Expects that a call comes to nothing for this reason, and leaves nothing behind.
    void expectNothing(const std::string& outcome, const char* function, const char* message) {
        EXPECT_EQ(outcome, std::string("null: ") + message);
        expectFailure(function, message);
        EXPECT_THAT(device.openCalls(), IsEmpty());
    }

    tavtest::Requests requests;
};

TEST_F(PurchaseTest, RequestsGoOutInTheApplicationsNameAndOnlyAPurchaseWaitsWithoutLimit) {
    const std::string reply = "{\"returnValue\":true, \"x\":\"\xff\"} ";
    for (const Call& call : kCalls) {
        SCOPED_TRACE(call.request.second);
        begin(reply);
        EXPECT_EQ(call.run(), reply);
        EXPECT_THAT(requests, ElementsAre(call.request));
        EXPECT_EQ(tavtest::optionsSent(device), std::set{false});
        EXPECT_THAT(trace(), testing::Not(testing::Contains(testing::StartsWith("tav_f"))));

        begin(reply, 100000);
        if (call.timesOut) {
            expectNothing(call.run(), "blockingKSCall", "Timed out waiting for response to call");
        } else {
            EXPECT_EQ(call.run(), reply);
        }
        EXPECT_EQ(device.now(), call.timesOut ? 15000 : 100050);
    }
}

TEST_F(PurchaseTest, AReturnValueThatReadsFalseIsAFailure) {
    const std::string padding(3 << 20, 'x');
    const std::string failures[] = {R"({"returnValue":false,"errorText":"no funds %s"})",
                                    R"({"returnValue":"FalsE"})",
                                    R"({"returnValue":false,"pad":")" + padding + "\"}"};
    for (const std::string& reply : failures) {
        begin(reply);
        // SDL itself cuts a long text.
        const std::string error = "Failure on dispatch: " + reply;
        EXPECT_EQ(kCalls[0].run().substr(0, 66), "null: " + error.substr(0, 60));
        EXPECT_EQ(trace().back(), "tav_e dispatch " + error);
    }
    const tavsim::Reply successes[] = {R"({"returnValue":"falsey"})",
                                       R"({"returnValue":0})",
                                       R"({"returnValue":null})",
                                       R"({"errorCode":-3})",
                                       "returnValue false",
                                       std::string(100000, '['),
                                       padding,
                                       std::nullopt};
    for (const tavsim::Reply& reply : successes) {
        begin(reply);
        EXPECT_EQ(kCalls[0].run(), reply.value_or(""));
    }
}

using QuitWhileItWaitsTest = tavtest::EventTest;

TEST_F(QuitWhileItWaitsTest, EndsAnEndlessPurchaseAndReachesTheApplicationAfterwards) {
    device.profile.items = {{"ship", "", "", tavsim::Purchase::Silent}};
    // The second one is asked to quit in the very moment of its answer, too.
    const std::pair<std::function<std::string()>, std::string> calls[] = {
        {[] { return take(TAV_PurchaseItem("ship", 1, nullptr)); }, "the user left"},
        {[] { return take(TAV_GetItemInfo("ship")); }, "ship"}};
    for (const auto& [call, answer] : calls) {
        SDL_Event event{};
        event.type = SDL_QUIT;
        ASSERT_EQ(SDL_PushEvent(&event), 0);
        EXPECT_THAT(call(), testing::HasSubstr(answer));
        EXPECT_EQ(SDL_PollEvent(&event), 0);
        device.advance(100);
        ASSERT_EQ(SDL_PollEvent(&event), 1) << answer;
        EXPECT_EQ(event.type, SDL_QUIT);
        EXPECT_EQ(SDL_PollEvent(&event), 0) << "nothing waits any more";
    }
}

}  // namespace
