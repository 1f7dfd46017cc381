#include <functional>

#include "device_test.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using WindowTest = tavtest::DeviceTest;

constexpr char kNoCard[] = "Unable to communicate with app card";

// One call, and what is to come of it.
struct Control {
    const char* name;
    std::function<int()> call;
    std::string entry;     // the arguments as the entry trace has them
    std::string platform;  // the platform's function with its arguments, as the journal has them
    std::string request;   // the name by which the device refuses it
    int refusedCode;
    const char* refusedMessage;
    const char* pluginMessage;  // null where plug-ins may
};

std::vector<Control> controls() {
    std::vector<Control> all = {{"TAV_Minimize", TAV_Minimize, "--", "NApp_Minimize\"", "minimize",
                                 TAV_EOTHER, "Failed IPC communication for minimize",
                                 "You can not minimize a Plugin"}};
    for (const int visible : {0, 1, 5}) {
        all.push_back(
            {"TAV_SetKeyboardState",
             [=] { return TAV_SetKeyboardState(tavtest::anyValue<SDL_bool>(visible)); },
             visible != 0 ? "true" : "false",
             std::string("NApp_SetKeyboardState\",\"visible\":") + (visible != 0 ? "1" : "0"),
             "keyboard", TAV_ECONNECTION, "Could not communicate with card",
             "Not allowed to bring up the keyboard as a plugin"});
    }
    for (const int aggression : {-1, 0, 1, 2}) {
        const char* message = "Could not communicate with Touch Aggression service";
        all.push_back({"TAV_SetTouchAggression", [=] { return TAV_SetTouchAggression(aggression); },
                       std::to_string(aggression),
                       std::string("NApp_SetTouchAggression\",\"aggression\":") +
                           (aggression == 1 ? "1" : "-1"),
                       "touch", TAV_ECONNECTION, message, message});
    }
    const struct {
        const char* name;
        int (*call)(SDL_bool);
        const char* hook;
        const char* request;
    } switches[] = {
        {"TAV_CustomPauseUiEnable", TAV_CustomPauseUiEnable, "CustomPauseUiEnable", "pauseUi"},
        {"TAV_GesturesEnable", TAV_GesturesEnable, "SetGesturesEnable", "gestures"},
        {"TAV_BannerMessagesEnable", TAV_BannerMessagesEnable, "BannerMessagesEnable", "banners"},
        {"TAV_ScreenTimeoutEnable", TAV_ScreenTimeoutEnable, "ScreenTimeoutEnable",
         "screenTimeout"},
    };
    for (const auto& row : switches) {
        for (const int enable : {0, 1, -5}) {
            all.push_back({row.name, [=] { return row.call(tavtest::anyValue<SDL_bool>(enable)); },
                           enable != 0 ? "true" : "false",
                           std::string("SDL_NimboHook") + row.hook +
                               "\",\"enable\":" + std::to_string(enable),
                           row.request, TAV_ECONNECTION, kNoCard, nullptr});
        }
    }
    const std::string orientations[] = {"bottom", "right", "top", "left"};
    for (int value = 0; value < 4; ++value) {
        all.push_back(
            {"TAV_SetOrientation",
             [=] { return TAV_SetOrientation(tavtest::anyValue<TAV_Orientation>(value)); },
             std::to_string(value),
             "SDL_NimboHookSetOrientation\",\"orientation\":\"" + orientations[value],
             "orientation", TAV_ECONNECTION, kNoCard, nullptr});
    }
    return all;
}

TEST_F(WindowTest, EachRequestIsPassedOnAndARefusalReported) {
    for (const Control& control : controls()) {
        SCOPED_TRACE(control.platform);
        startDevice({});
        EXPECT_EQ(control.call(), TAV_NOERROR);
        EXPECT_EQ(trace().front(), std::string("tav_f ") + control.name + " " + control.entry);
        EXPECT_THAT(device.journal(), Contains(HasSubstr("\"what\":\"" + control.platform)));
        EXPECT_STREQ(SDL_GetError(), "");

        device.profile.refused = {control.request};
        EXPECT_EQ(control.call(), control.refusedCode);
        expectFailure(control.name, control.refusedMessage);
    }
}

TEST_F(WindowTest, APluginMayUseSDLsHooksButNotTheHosts) {
    device.profile.plugin = true;
    for (const Control& control : controls()) {
        SCOPED_TRACE(control.platform);
        if (control.pluginMessage == nullptr) {
            EXPECT_EQ(control.call(), TAV_NOERROR);
        } else {
            EXPECT_EQ(control.call(), TAV_EOTHER);
            expectFailure(control.name, control.pluginMessage);
        }
    }
    EXPECT_THAT(device.journal(), Not(Contains(HasSubstr("NApp_"))));
}

TEST_F(WindowTest, AnOrientationOutsideTheFourNeverReachesSDL) {
    for (const int value : {-1, 4, 0x7fffffff, -0x7fffffff - 1}) {
        EXPECT_EQ(TAV_SetOrientation(tavtest::anyValue<TAV_Orientation>(value)), TAV_INVALIDINPUT);
        EXPECT_STREQ(SDL_GetError(), "invalid orientation");
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_SetOrientation " + std::to_string(value),
                                         "tav_e TAV_SetOrientation invalid orientation"));
    }
    EXPECT_THAT(device.journal(), Not(Contains(HasSubstr("SetOrientation"))));
}

}  // namespace
