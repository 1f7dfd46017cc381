#include "core/report.h"
#include "core/status.h"
#include "device_test.h"

namespace {

using testing::ElementsAre;
using CoreTest = tavtest::DeviceTest;

TEST_F(CoreTest, AFailureLeavesMessageAndTraceAndSuccessKeepsThem) {
    EXPECT_EQ(tav::fail("someFunction", TAV_ENETWORK, "%s is %d", "seven", 7), TAV_ENETWORK);
    EXPECT_STREQ(TAV_GetError(), "seven is 7");
    EXPECT_EQ(tav::failNull("otherFunction", "nothing"), nullptr);
    EXPECT_EQ(TAV_GetKOBVersion(), 300);
    for (const SDL_bool plugin : {SDL_FALSE, SDL_TRUE}) {
        device.profile.plugin = plugin;
        EXPECT_EQ(TAV_IsPlugin(), plugin);
    }
    EXPECT_STREQ(TAV_GetError(), "nothing");
    EXPECT_THAT(trace(), ElementsAre("tav_e someFunction seven is 7", "tav_f TAV_GetError --",
                                     "tav_e otherFunction nothing", "tav_f TAV_GetKOBVersion --",
                                     "tav_f TAV_IsPlugin --", "tav_f TAV_IsPlugin --",
                                     "tav_f TAV_GetError --"));
}

TEST_F(CoreTest, HostStatusesBecomeErrorCodes) {
    EXPECT_EQ(tav::convertFromNAppError(1), TAV_NOERROR);
    EXPECT_EQ(tav::convertFromNAppError(100), TAV_STRINGTOOSMALL);
    EXPECT_EQ(tav::convertFromNAppError(102), TAV_EHOSTLOOKUP);
    for (const int status : {-1, 0, 2, 101, 103}) {
        EXPECT_EQ(tav::convertFromNAppError(status), TAV_EOTHER) << status;
    }
}

TEST_F(CoreTest, EveryBooleanButZeroIsSpeltTrue) {
    EXPECT_STREQ(getBooleanString(SDL_FALSE), "false");
    EXPECT_STREQ(getBooleanString(tavtest::anyValue<SDL_bool>(-256)), "true");
    EXPECT_THAT(trace(),
                ElementsAre("tav_f getBooleanString false", "tav_f getBooleanString true"));
}

}  // namespace
