#include "device/hardware.h"

#include "device_test.h"

namespace {

using testing::ElementsAre;

class HardwareTest : public tavtest::DeviceTest {
protected:
    HardwareTest() { tav::g_hardwareType = tav::kUnknownHardware; }

    int idOf(const char* machine) {
        tav::g_hardwareType = tav::kUnknownHardware;
        device.profile.machine = machine;
        return TAV_GetHardwareID();
    }
};

TEST_F(HardwareTest, KnowsEachModel) {
    const struct {
        const char* machine;
        int id;
        const char* product;
        TAV_ScreenMetrics screen;
    } rows[] = {
        {"harrow", 101, "zon", {320, 480, 213, 183, 1.164}},
        {"harrow+", 102, "zon", {320, 480, 213, 183, 1.164}},
        {"quern", 201, "lute", {320, 400, 190, 190, 1.0}},
        {"tamarisk", 301, "unknown", {320, 400, 190, 190, 1.0}},
        {"marshlight", 401, "unknown", {320, 480, 213, 183, 1.164}},
        {"cinnabar", 501, "unknown", {480, 800, 260, 260, 1.0}},
        {"ember", 601, "unknown", {1024, 768, 132, 132, 1.0}},
        {"fern", 701, "unknown", {1024, 768, 182, 182, 1.0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.machine);
        EXPECT_EQ(idOf(row.machine), row.id);
        EXPECT_STREQ(TAV_GetHardware(), row.product);
        TAV_ScreenMetrics screen;
        EXPECT_EQ(TAV_GetScreenMetrics(&screen), TAV_NOERROR);
        EXPECT_EQ(std::memcmp(&screen, &row.screen, sizeof screen), 0);
    }
}

TEST_F(HardwareTest, OnlyTheExactNameIsKnownAndSpoofingReplacesIt) {
    device.profile.machine.reset();
    EXPECT_EQ(TAV_GetHardwareID(), -1);
    for (const char* name : {"", "Fern", "fern ", "fer", "harrow++"}) {
        EXPECT_EQ(idOf(name), -1) << '"' << name << '"';
        device.profile.portability["final_spoofing"] = name;
        EXPECT_EQ(idOf("quern"), -1);
        device.profile.portability["final_spoofing"] = "cinnabar";
        EXPECT_EQ(idOf("quern"), 501);
        device.profile.portability.clear();
    }
}

TEST_F(HardwareTest, RemembersAKnownMachineButLooksAgainForAnUnknownOne) {
    device.profile.machine = "mystery";
    EXPECT_EQ(TAV_GetHardwareID(), -1);
    device.profile.machine = "ember";
    EXPECT_EQ(TAV_GetHardwareID(), 601);
    device.profile.machine = "fern";
    device.profile.portability["final_spoofing"] = "quern";
    EXPECT_STREQ(TAV_GetHardware(), "unknown");
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_GetHardwareID --", "tav_f doGetHardwareID --",
                                     "tav_f TAV_GetHardwareID --", "tav_f doGetHardwareID --",
                                     "tav_f TAV_GetHardware --", "tav_f TAV_GetHardwareID --"));
    EXPECT_EQ(TAV_GetHardwareID(), 601);
}

TEST_F(HardwareTest, ScreenMetricsReportFailures) {
    EXPECT_EQ(TAV_GetScreenMetrics(nullptr), TAV_INVALIDINPUT);
    EXPECT_EQ(trace().front(), "tav_f TAV_GetScreenMetrics (NON-HAL) (nil)");
    EXPECT_STREQ(SDL_GetError(), "outMetrics must not be NULL");

    TAV_ScreenMetrics screen = {1, 2, 3, 4, 5.0};
    EXPECT_EQ(TAV_GetScreenMetrics(&screen), TAV_EOTHER);
    const TAV_ScreenMetrics zero = {};
    EXPECT_EQ(std::memcmp(&screen, &zero, sizeof screen), 0);
    const std::vector<std::string> lines = trace();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[3], "tav_1 getDeviceScreenMetrics returning unknown hardware");
    EXPECT_EQ(lines[4], "tav_e getDeviceScreenMetrics unknown hardware");
    EXPECT_STREQ(SDL_GetError(), "unknown hardware");
}

}  // namespace
