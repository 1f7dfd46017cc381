// Start and stop of the library as a whole.
#include "core/init.h"

#include "device/compass.h"
#include "device_test.h"

namespace {

using testing::ElementsAre;

using InitTest = tavtest::DeviceTest;

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

TEST_F(InitTest, QuitEmptiesBothRegistriesAndStaysStarted) {
    tav::g_calledInit = 0;
    TAV_CompassReading reading;
    for (const int started : {0, 1}) {
        TAV_Quit();
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_Quit --", "tav_f TAV_ServicesQuit --",
                                         "tav_f TAV_JSQuit --"));
        EXPECT_EQ(tav::g_calledInit, started);
        if (started == 0) {
            EXPECT_EQ(TAV_GetCompass(&reading), TAV_UNINIT);
            expectFailure("TAV_GetCompass", "You must call TAV_Init before calling TAV_GetCompass");
        }
        TAV_Init(0);
        trace();
    }
}

}  // namespace
