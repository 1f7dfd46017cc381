#include <functional>
#include <map>
#include <utility>

#include "device_test.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using WindowTest = tavtest::DeviceTest;

SDL_bool boolean(int value) {
    return tavtest::anyValue<SDL_bool>(value);
}

// One call, what it traces on entry, and the platform's function with the arguments it is to see.
struct Control {
    const char* name;
    std::function<int()> call;
    std::string entry;
    std::string request;  // the name by which the device refuses it
    std::string journal;
};

std::vector<Control> hostControls() {
    return {
        {"TAV_SetKeyboardState", [] { return TAV_SetKeyboardState(SDL_FALSE); }, "false",
         "keyboard", "NApp_SetKeyboardState\",\"visible\":0"},
        {"TAV_SetKeyboardState", [] { return TAV_SetKeyboardState(boolean(5)); }, "true",
         "keyboard", "NApp_SetKeyboardState\",\"visible\":1"},
        {"TAV_Minimize", TAV_Minimize, "--", "minimize", "NApp_Minimize\""},
        {"TAV_SetTouchAggression", [] { return TAV_SetTouchAggression(1); }, "1", "touch",
         "NApp_SetTouchAggression\",\"aggression\":1"},
        {"TAV_SetTouchAggression", [] { return TAV_SetTouchAggression(0); }, "0", "touch",
         "NApp_SetTouchAggression\",\"aggression\":-1"},
        {"TAV_SetTouchAggression", [] { return TAV_SetTouchAggression(2); }, "2", "touch",
         "NApp_SetTouchAggression\",\"aggression\":-1"},
        {"TAV_SetTouchAggression", [] { return TAV_SetTouchAggression(-9); }, "-9", "touch",
         "NApp_SetTouchAggression\",\"aggression\":-1"},
    };
}

std::vector<Control> hookControls() {
    std::vector<Control> controls;
    const struct {
        const char* name;
        int (*call)(SDL_bool);
        const char* request;
        std::string hook;
    } switches[] = {
        {"TAV_CustomPauseUiEnable", TAV_CustomPauseUiEnable, "pauseUi",
         "SDL_NimboHookCustomPauseUiEnable"},
        {"TAV_GesturesEnable", TAV_GesturesEnable, "gestures", "SDL_NimboHookSetGesturesEnable"},
        {"TAV_BannerMessagesEnable", TAV_BannerMessagesEnable, "banners",
         "SDL_NimboHookBannerMessagesEnable"},
        {"TAV_ScreenTimeoutEnable", TAV_ScreenTimeoutEnable, "screenTimeout",
         "SDL_NimboHookScreenTimeoutEnable"},
    };
    for (const auto& row : switches) {
        for (const int value : {0, 1, -5}) {
            controls.push_back({row.name, [=] { return row.call(boolean(value)); },
                                value != 0 ? "true" : "false", row.request,
                                row.hook + "\",\"enable\":" + std::to_string(value)});
        }
    }
    const char* const orientations[] = {"bottom", "right", "top", "left"};
    for (int value = 0; value < 4; ++value) {
        controls.push_back(
            {"TAV_SetOrientation",
             [=] { return TAV_SetOrientation(tavtest::anyValue<TAV_Orientation>(value)); },
             std::to_string(value), "orientation",
             std::string("SDL_NimboHookSetOrientation\",\"orientation\":\"") +
                 orientations[value]});
    }
    return controls;
}

TEST_F(WindowTest, PassEachRequestOnAsThePlatformWantsIt) {
    std::vector<Control> controls = hostControls();
    for (const Control& control : hookControls()) {
        controls.push_back(control);
    }
    for (const Control& control : controls) {
        SCOPED_TRACE(control.name + (" " + control.journal));
        startDevice({});
        EXPECT_EQ(control.call(), TAV_NOERROR);
        EXPECT_EQ(trace().front(), std::string("tav_f ") + control.name + " " + control.entry);
        EXPECT_THAT(device.journal(), Contains(HasSubstr("\"what\":\"" + control.journal)));
        EXPECT_STREQ(SDL_GetError(), "");
    }
}

TEST_F(WindowTest, APluginMayUseSDLsHooksButNotTheHosts) {
    sim::Profile plugin;
    plugin.plugin = true;
    const std::map<std::string, const char*> messages = {
        {"TAV_SetKeyboardState", "Not allowed to bring up the keyboard as a plugin"},
        {"TAV_Minimize", "You can not minimize a Plugin"},
        {"TAV_SetTouchAggression", "Could not communicate with Touch Aggression service"},
    };
    startDevice(plugin);
    for (const Control& control : hostControls()) {
        SCOPED_TRACE(control.name);
        EXPECT_EQ(control.call(), TAV_EOTHER);
        expectFailure(control.name, messages.at(control.name));
    }
    EXPECT_THAT(device.journal(), Not(Contains(HasSubstr("NApp_"))));
    for (const Control& control : hookControls()) {
        EXPECT_EQ(control.call(), TAV_NOERROR) << control.name;
    }
}

TEST_F(WindowTest, ReportARefusal) {
    const std::map<std::string, std::pair<int, const char*>> hostFailures = {
        {"TAV_SetKeyboardState", {TAV_ECONNECTION, "Could not communicate with card"}},
        {"TAV_Minimize", {TAV_EOTHER, "Failed IPC communication for minimize"}},
        {"TAV_SetTouchAggression",
         {TAV_ECONNECTION, "Could not communicate with Touch Aggression service"}},
    };
    for (const Control& control : hostControls()) {
        SCOPED_TRACE(control.name);
        device.profile.refused = {control.request};
        const auto& [code, message] = hostFailures.at(control.name);
        EXPECT_EQ(control.call(), code);
        expectFailure(control.name, message);
    }
    for (const Control& control : hookControls()) {
        SCOPED_TRACE(control.name);
        device.profile.refused = {control.request};
        EXPECT_EQ(control.call(), TAV_ECONNECTION);
        expectFailure(control.name, "Unable to communicate with app card");
    }
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
