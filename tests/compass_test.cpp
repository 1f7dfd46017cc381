#include "device/compass.h"

#include "core/init.h"
#include "device_test.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

class CompassTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        tav::g_calledInit = 0;
        tav::g_bCompassActive = 0;
        tav::g_compass = {};
    }

    void expectReading(int intValue, double doubleValue1, double doubleValue2) {
        TAV_CompassReading reading = {};
        EXPECT_EQ(TAV_GetCompass(&reading), TAV_NOERROR);
        EXPECT_EQ(reading.intValue, intValue);
        EXPECT_EQ(reading.doubleValue1, doubleValue1);
        EXPECT_EQ(reading.doubleValue2, doubleValue2);
    }
};

TEST_F(CompassTest, WhatMustComeFirstIsReportedFirst) {
    EXPECT_EQ(TAV_GetCompass(nullptr), TAV_UNINIT);
    expectFailure("TAV_GetCompass", "You must call TAV_Init before calling TAV_GetCompass");
    TAV_Init(0);
    EXPECT_EQ(TAV_GetCompass(nullptr), TAV_UNINIT);
    expectFailure("TAV_GetCompass",
                  "You must call TAV_EnableCompass before calling TAV_GetCompass");
    EXPECT_EQ(TAV_EnableCompass(SDL_TRUE), TAV_NOERROR);
    EXPECT_EQ(TAV_GetCompass(nullptr), TAV_INVALIDINPUT);
    expectFailure("TAV_GetCompass", "Sent-in value was NULL");
    TAV_Quit();
    expectReading(0, -1.0, -1.0);
}

TEST_F(CompassTest, ARefusalChangesNothing) {
    TAV_Init(0);
    EXPECT_EQ(TAV_EnableCompass(tavtest::anyValue<SDL_bool>(2)), TAV_NOERROR);
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("what":"compass","outcome":"on")"));
    device.profile.refused.insert("compass");
    trace();
    EXPECT_EQ(TAV_EnableCompass(SDL_FALSE), TAV_ECONNECTION);
    EXPECT_STREQ(SDL_GetError(), "");
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_EnableCompass --", "tav_f TAV_IsPlugin --"));
    device.profile.plugin = true;
    EXPECT_EQ(TAV_EnableCompass(SDL_FALSE), TAV_EOTHER);
    expectFailure("TAV_EnableCompass", "Compass currently not supported for Plugins");
    EXPECT_THAT(device.journal(), Contains(HasSubstr("NApp_EnableCompass")).Times(2));
    EXPECT_EQ(tav::g_bCompassActive, 2);  // the application's own boolean

    device.profile = {};
    EXPECT_EQ(TAV_EnableCompass(SDL_FALSE), TAV_NOERROR);
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("what":"compass","outcome":"off")"));
    EXPECT_EQ(TAV_GetCompass(nullptr), TAV_UNINIT);
}

TEST_F(CompassTest, StoresAndAnnouncesEveryReading) {
    TAV_Init(0);
    trace();
    ASSERT_TRUE(device.deliverCompass({3, 12.5, -0.25}));  // although it is not enabled
    EXPECT_THAT(trace(),
                ElementsAre("tav_f compassCallback compassCallback: 3 12.500000 -0.250000"));
    TAV_EnableCompass(SDL_TRUE);
    expectReading(3, 12.5, -0.25);
    SDL_Event event;
    ASSERT_EQ(SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_EVENTMASK(SDL_USEREVENT)), 1);
    EXPECT_EQ(event.user.code, TAV_EVENT_COMPASS);
    EXPECT_EQ(event.user.data1, &tav::g_compass);

    // A full queue loses the event but not the reading.
    constexpr int kMoreThanTheQueueHolds = 500;
    for (int i = 1; i <= kMoreThanTheQueueHolds; ++i) {
        ASSERT_TRUE(device.deliverCompass({i, 0.0, 0.0}));
    }
    expectReading(kMoreThanTheQueueHolds, 0.0, 0.0);
    EXPECT_LT(userEvents().size(), static_cast<std::size_t>(kMoreThanTheQueueHolds));
    TAV_Init(0);
    expectReading(0, -1.0, -1.0);
}

}  // namespace
