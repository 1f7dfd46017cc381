#include "core/report.h"
#include "core/status.h"
#include "device_test.h"

namespace {

using testing::ElementsAre;
using CoreTest = tavtest::DeviceTest;

TEST_F(CoreTest, FailingLeavesMessageAndTraceAndReturnsTheCode) {
    EXPECT_EQ(tav::fail("someFunction", TAV_ENETWORK, "%s is %d", "seven", 7), TAV_ENETWORK);
    EXPECT_STREQ(TAV_GetError(), "seven is 7");
    EXPECT_EQ(tav::failNull("otherFunction", "nothing"), nullptr);
    EXPECT_STREQ(TAV_GetError(), "nothing");
    EXPECT_THAT(trace(), ElementsAre("tav_e someFunction seven is 7", "tav_f TAV_GetError --",
                                     "tav_e otherFunction nothing", "tav_f TAV_GetError --"));
}

TEST_F(CoreTest, SuccessKeepsTheLastFailuresMessage) {
    EXPECT_EQ(TAV_GetScreenMetrics(nullptr), TAV_INVALIDINPUT);
    EXPECT_EQ(TAV_GetKOBVersion(), 300);
    EXPECT_STREQ(TAV_GetError(), "outMetrics must not be NULL");
}

TEST_F(CoreTest, QueriesTraceTheirEntry) {
    EXPECT_EQ(TAV_IsPlugin(), SDL_FALSE);
    device.profile.plugin = true;
    EXPECT_EQ(TAV_IsPlugin(), SDL_TRUE);
    TAV_GetKOBVersion();
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_IsPlugin --", "tav_f TAV_IsPlugin --",
                                     "tav_f TAV_GetKOBVersion --"));
}

TEST_F(CoreTest, HostStatusesBecomeErrorCodes) {
    const struct {
        int status;
        int code;
    } rows[] = {
        {1, TAV_NOERROR}, {100, TAV_STRINGTOOSMALL}, {102, TAV_EHOSTLOOKUP}, {0, TAV_EOTHER},
        {2, TAV_EOTHER},  {101, TAV_EOTHER},         {103, TAV_EOTHER},      {-1, TAV_EOTHER},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(tav::convertFromNAppError(row.status), row.code) << row.status;
    }
    EXPECT_TRUE(trace().empty());
}

TEST_F(CoreTest, EveryBooleanButZeroIsSpeltTrue) {
    EXPECT_STREQ(getBooleanString(SDL_FALSE), "false");
    EXPECT_STREQ(getBooleanString(SDL_TRUE), "true");
    EXPECT_STREQ(getBooleanString(tavtest::anyValue<SDL_bool>(-256)), "true");
    EXPECT_THAT(trace(), ElementsAre("tav_f getBooleanString false", "tav_f getBooleanString true",
                                     "tav_f getBooleanString true"));
}

}  // namespace
