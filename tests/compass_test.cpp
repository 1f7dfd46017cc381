#include "device/compass.h"

#include "core/init.h"
#include "device_test.h"

namespace {

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

TEST_F(CompassTest, StoresAndAnnouncesEveryReading) {
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    ASSERT_TRUE(device.deliverCompass({3, 12.5, -0.25}));
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
