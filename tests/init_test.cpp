// Start and stop of the library as a whole.
#include "core/init.h"

#include <algorithm>

#include "device/compass.h"
#include "tests/device_test.h"

namespace {

using testing::ElementsAre;

int g_replies = 0;

class InitTest : public tavtest::DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        tav::g_calledInit = 0;
    }

    // A one-shot call and a subscription of a service that replies twice.
    void callService(TAV_ServiceCallback callback) {
        sim::Profile profile;
        profile.services["kora://one"] = {
            .replies = {"{\"a\":1}", "{}"}, .delay = 100, .every = 100, .compute = {}};
        startDevice(profile);
        g_replies = 0;
        for (const SDL_bool oneShot : {SDL_TRUE, SDL_FALSE}) {
            TAV_ServiceCallWithCallback("kora://one", "{}", callback, nullptr, oneShot);
        }
        trace();
    }

    // What became of the replies within a second.
    long ignoredReplies() {
        device.advance(1000);
        const std::vector<std::string> lines = trace();
        return std::count(lines.begin(), lines.end(), "tav_1 userCallback ignored callback");
    }
};

TEST_F(InitTest, StartsInOrderAndAgain) {
    for (int time = 0; time < 2; ++time) {
        tav::g_compass = {7, 8.0, 9.0};
        EXPECT_EQ(TAV_Init(-7), TAV_NOERROR);
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_Init -7", "tav_f registerRoleFile --",
                                         "tav_1 registerRoleFile Not a root user",
                                         "tav_2 TAV_Init Initting NApp with TAV callbacks"));
        EXPECT_EQ(tav::g_compass.intValue, 0);
        EXPECT_EQ(tav::g_compass.doubleValue1, -1.0);
        EXPECT_EQ(tav::g_compass.doubleValue2, -1.0);
    }
    EXPECT_TRUE(device.deliverCompass({1, 2.0, 3.0}));
    EXPECT_EQ(tav::g_compass.doubleValue2, 3.0);
}

TEST_F(InitTest, StaysStartedAfterTheEnd) {
    TAV_CompassReading reading;
    TAV_Quit();
    EXPECT_EQ(TAV_GetCompass(&reading), TAV_UNINIT);
    expectFailure("TAV_GetCompass", "You must call TAV_Init before calling TAV_GetCompass");
    TAV_Init(0);
    TAV_Quit();
    EXPECT_EQ(tav::g_calledInit, 1);
}

TEST_F(InitTest, QuitEmptiesBothRegistriesInOrder) {
    for (int time = 0; time < 2; ++time) {
        TAV_Quit();
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_Quit --", "tav_f TAV_ServicesQuit --",
                                         "tav_f TAV_JSQuit --"));
    }
}

TEST_F(InitTest, RepliesAfterTheEndAreIgnored) {
    callService([](TAV_ServiceParameters*, void*) { ++g_replies; });
    TAV_Quit();
    EXPECT_EQ(device.openCalls().size(), 2u);
    EXPECT_EQ(ignoredReplies(), 3);
    EXPECT_EQ(g_replies, 0);
}

TEST_F(InitTest, AReplyFunctionMayQuit) {
    callService([](TAV_ServiceParameters* parameters, void*) {
        TAV_Quit();
        g_replies += TAV_GetParamInt(parameters, "a");
    });
    EXPECT_EQ(ignoredReplies(), 2);
    EXPECT_EQ(g_replies, 1);
}

}  // namespace
