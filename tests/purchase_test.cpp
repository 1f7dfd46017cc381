#include "transcript.h"

namespace {

using tavtest::take;

class PurchaseTest : public tavtest::TranscriptTest {
protected:
    // Lets every payment service give this reply after the delay.
    void replyWith(const tavsim::Reply& reply, int delay = 0) {
        for (const char* name :
             {"getAvailableItems", "purchaseItem", "getItemInfo", "getPendingPurchaseInfo"}) {
            device.profile.services[std::string("vire://com.vire.service.payment/") + name] =
                tavtest::repliesOf({reply}, delay);
        }
    }
};

TEST_F(PurchaseTest, OnlyAPurchaseWaitsWithoutLimit) {
    for (const int delay : {0, 100000}) {
        replyWith("{\"returnValue\":true, \"x\":\"\xff\"} ", delay);
        CALL(TAV_GetAvailableItems());
        CALL(TAV_GetItemInfo("shield"));
        CALL(TAV_GetPendingPurchaseInfo("17"));
        CALL(TAV_PurchaseItem("sword \"%d\"", 1, nullptr));
        CALL(device.now());
        CALL(device.openCalls().size());
    }
}

TEST_F(PurchaseTest, AReturnValueThatReadsFalseIsAFailure) {
    for (const std::string& reply :
         split(R"({"returnValue":false,"errorText":"no funds %s"}|{"returnValue":"FalsE"}|)"
               R"({"returnValue":"falsey"}|{"returnValue":0}|{"returnValue":null}|)"
               R"({"errorCode":-3}|returnValue false)")) {
        replyWith(reply);
        note(reply + " -> " + take(TAV_GetAvailableItems()));
    }
    replyWith(std::nullopt);
    note("null -> " + take(TAV_GetAvailableItems()));
    const std::string padding(3 << 20, 'x');
    for (const std::string& success : {padding, std::string(100000, '[')}) {
        replyWith(success);
        EXPECT_EQ(take(TAV_GetAvailableItems()), success);
    }
    const std::string failure = R"({"returnValue":false,"pad":")" + padding + "\"}";
    replyWith(failure);
    EXPECT_EQ(TAV_GetAvailableItems(), nullptr);  // SDL truncates so long an error
    EXPECT_EQ(trace().back(), "tav_e dispatch Failure on dispatch: " + failure);
}

// The second request is answered in the same pass in which the user asks to quit.
TEST_F(PurchaseTest, ThatAwaitsAnswersEndsWhenAskedToQuitAndTheApplicationHearsOfItAfterwards) {
    device.profile.items = {{"ship", "", "", tavsim::Purchase::Silent}};
    for (const bool isPurchase : {true, false}) {
        SDL_Event event{};
        event.type = SDL_QUIT;
        ASSERT_EQ(SDL_PushEvent(&event), 0);
        EXPECT_THAT(
            isPurchase ? take(TAV_PurchaseItem("ship", 1, nullptr)) : take(TAV_GetItemInfo("ship")),
            testing::HasSubstr(isPurchase ? "the user left" : "ship"));
        ASSERT_EQ(SDL_PollEvent(&event), 1);
        EXPECT_EQ(event.type, SDL_QUIT);
        EXPECT_EQ(SDL_PollEvent(&event), 0) << "nothing waits any more";
    }
    ASSERT_EQ(tavsim::carryOut("key down a").error, "");
    take(TAV_GetItemInfo("ship"));
    EXPECT_THAT(device.journal(),
                testing::Contains(testing::HasSubstr("\"input\":\"key down a\"")));
}

}  // namespace
