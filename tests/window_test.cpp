#include <functional>

#include "device_test.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using WindowTest = tavtest::DeviceTest;

constexpr char kNoCard[] = "Unable to communicate with app card";
constexpr char kNoTouch[] = "Could not communicate with Touch Aggression service";

struct Value {
    int value;
    const char* traced;    // on entry
    const char* passedOn;  // to the platform's function, as the journal has it
};
const std::vector<Value> kNone = {{0, "--", ""}};
const std::vector<Value> kAnyBoolean = {{0, "false", "0"}, {1, "true", "1"}, {-5, "true", "-5"}};
const std::vector<Value> kStates = {{0, "false", "0"}, {1, "true", "1"}, {5, "true", "1"}};
const std::vector<Value> kAggressions = {
    {-1, "-1", "-1"}, {0, "0", "-1"}, {1, "1", "1"}, {2, "2", "-1"}};
const std::vector<Value> kOrientations = {
    {0, "0", "bottom"}, {1, "1", "right"}, {2, "2", "top"}, {3, "3", "left"}};

// One function, and what is to come of its calls.
struct Control {
    const char* name;
    std::function<int(int)> call;
    std::vector<Value> values;
    std::string platform;  // the platform's function, as the journal has it
    const char* request;   // the name by which the device refuses it
    const char* refusedMessage = kNoCard;
    const char* pluginMessage = nullptr;  // null where plug-ins may
    int refusedCode = TAV_ECONNECTION;
};

// Calls with any value, as a C caller can.
template <typename Enumeration>
std::function<int(int)> with(int (*function)(Enumeration)) {
    return [function](int value) { return function(tavtest::anyValue<Enumeration>(value)); };
}

const Control kControls[] = {
    {"TAV_Minimize", [](int) { return TAV_Minimize(); }, kNone, "NApp_Minimize\"", "minimize",
     "Failed IPC communication for minimize", "You can not minimize a Plugin", TAV_EOTHER},
    {"TAV_SetKeyboardState", with(TAV_SetKeyboardState), kStates,
     "NApp_SetKeyboardState\",\"visible\":", "keyboard", "Could not communicate with card",
     "Not allowed to bring up the keyboard as a plugin"},
    {"TAV_SetTouchAggression", TAV_SetTouchAggression, kAggressions,
     "NApp_SetTouchAggression\",\"aggression\":", "touch", kNoTouch, kNoTouch},
    {"TAV_CustomPauseUiEnable", with(TAV_CustomPauseUiEnable), kAnyBoolean,
     "SDL_NimboHookCustomPauseUiEnable\",\"enable\":", "pauseUi"},
    {"TAV_GesturesEnable", with(TAV_GesturesEnable), kAnyBoolean,
     "SDL_NimboHookSetGesturesEnable\",\"enable\":", "gestures"},
    {"TAV_BannerMessagesEnable", with(TAV_BannerMessagesEnable), kAnyBoolean,
     "SDL_NimboHookBannerMessagesEnable\",\"enable\":", "banners"},
    {"TAV_ScreenTimeoutEnable", with(TAV_ScreenTimeoutEnable), kAnyBoolean,
     "SDL_NimboHookScreenTimeoutEnable\",\"enable\":", "screenTimeout"},
    {"TAV_SetOrientation", with(TAV_SetOrientation), kOrientations,
     "SDL_NimboHookSetOrientation\",\"orientation\":\"", "orientation"},
};

TEST_F(WindowTest, RequestsArePassedOnOrRefused) {
    for (const Control& control : kControls) {
        for (const Value& value : control.values) {
            SCOPED_TRACE(std::string(control.name) + " " + value.traced);
            startDevice({});
            EXPECT_EQ(control.call(value.value), TAV_NOERROR);
            EXPECT_EQ(trace().front(), std::string("tav_f ") + control.name + " " + value.traced);
            EXPECT_THAT(device.journal(),
                        Contains(HasSubstr("\"what\":\"" + control.platform + value.passedOn)));
            EXPECT_STREQ(SDL_GetError(), "");

            device.profile.refused = {control.request};
            EXPECT_EQ(control.call(value.value), control.refusedCode);
            expectFailure(control.name, control.refusedMessage);
        }
        startDevice({});
        device.profile.plugin = true;
        const int code = control.call(control.values.front().value);
        if (control.pluginMessage == nullptr) {
            EXPECT_EQ(code, TAV_NOERROR);
        } else {
            EXPECT_EQ(code, TAV_EOTHER);
            expectFailure(control.name, control.pluginMessage);
            EXPECT_THAT(device.journal(), Not(Contains(HasSubstr("NApp_"))));
        }
    }
}

TEST_F(WindowTest, AnOrientationOutsideTheFourNeverReachesSDL) {
    for (const int value : {-1, 4}) {
        EXPECT_EQ(TAV_SetOrientation(tavtest::anyValue<TAV_Orientation>(value)), TAV_INVALIDINPUT);
        EXPECT_STREQ(SDL_GetError(), "invalid orientation");
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_SetOrientation " + std::to_string(value),
                                         "tav_e TAV_SetOrientation invalid orientation"));
    }
    EXPECT_THAT(device.journal(), Not(Contains(HasSubstr("SetOrientation"))));
}

}  // namespace
