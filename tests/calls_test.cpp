// Calls with valid arguments, with arguments at the limits and with invalid ones: on a device that
// accepts them, on one that refuses them, and in an application that runs as a plug-in.
#include <climits>
#include <set>

#include "bridge.h"
#include "core/init.h"
#include "core/report.h"
#include "core/status.h"
#include "device/compass.h"
#include "device/hardware.h"
#include "device/location.h"
#include "device/preferences.h"
#include "services/service_calls.h"
#include "transcript.h"

namespace {

using tavtest::anyValue;

using Calls = tavtest::TranscriptTest;

TEST_F(Calls, Window) {
    for (const char* state : {"accepted", "refused", "plugin"}) {
        note(state);
        const bool isAccepted = std::string(state) == "accepted";
        device.profile.plugin = std::string(state) == "plugin";
        device.profile.refused.clear();
        if (!isAccepted && !device.profile.plugin) {
            device.profile.refused = {"keyboard", "minimize", "touch",   "orientation",
                                      "gestures", "banners",  "pauseUi", "screenTimeout"};
        }
        CALL(TAV_Minimize());
        for (const int value : isAccepted ? std::vector{0, 1, -5} : std::vector{1}) {
            CALL(TAV_SetKeyboardState(anyValue<SDL_bool>(value)));
            CALL(TAV_CustomPauseUiEnable(anyValue<SDL_bool>(value)));
            CALL(TAV_GesturesEnable(anyValue<SDL_bool>(value)));
            CALL(TAV_BannerMessagesEnable(anyValue<SDL_bool>(value)));
            CALL(TAV_ScreenTimeoutEnable(anyValue<SDL_bool>(value)));
        }
        for (const int aggression : isAccepted ? std::vector{-1, 0, 1, 2} : std::vector{1}) {
            CALL(TAV_SetTouchAggression(aggression));
        }
        for (const int orientation :
             isAccepted ? std::vector{-1, 0, 1, 2, 3, 4} : std::vector{1, 4}) {
            CALL(TAV_SetOrientation(anyValue<TAV_Orientation>(orientation)));
        }
    }
}

TEST_F(Calls, Actions) {
    const std::string longText(3000, 'x');
    const char* recipients[] = {"a@example.org", "\"b\" <%s>", nullptr, "c"};
    for (const auto& [period, duration] : {std::pair{0, 500}, {100, 0}, {-5, 0}, {-1, -1}}) {
        CALL(TAV_Vibrate(period, duration));
    }
    for (const int port : {INT_MIN, 1024, 1025, INT_MAX}) {
        CALL(TAV_SetFirewallPortStatus(port, anyValue<SDL_bool>(-1)));
    }
    CALL(TAV_SetFirewallPortStatus(1025, SDL_FALSE));
    for (const int refused : {1, 2}) {
        device.failNth(tavsim::Fault::Dispatch, refused);
        CALL(TAV_SetFirewallPortStatus(1025, SDL_TRUE));
    }
    CALL(TAV_NotifyMusicPlaying(anyValue<SDL_bool>(2)));
    CALL(TAV_NotifyMusicPlaying(SDL_FALSE));
    CALL(TAV_LaunchBrowser("http://x/?q=\"%d\""));
    CALL(TAV_LaunchBrowser(nullptr));
    CALL(TAV_LaunchEmail("S\"", longText.c_str()));
    CALL(TAV_LaunchEmail(nullptr, nullptr));
    CALL(TAV_LaunchEmail("", nullptr));
    CALL(TAV_LaunchEmailTo("S", "", 2, recipients));
    CALL(TAV_LaunchEmailTo("S", "B", 4, recipients));
    CALL(TAV_LaunchEmailTo("", "", 3, recipients));
    CALL(TAV_LaunchEmailTo("", "", 1, nullptr));
    CALL(TAV_LaunchEmailTo("", nullptr, 1, nullptr));
    CALL(TAV_LaunchEmailTo(nullptr, nullptr, 1, nullptr));
    CALL(TAV_LaunchEmailTo("", nullptr, -1, recipients));
    CALL(TAV_LaunchEmailTo(nullptr, "B", 0, recipients));
    CALL(device.openCalls().size());
}

TEST_F(Calls, Core) {
    tav::g_calledInit = 0;
    for (const bool plugin : {false, true}) {
        device.profile.plugin = plugin;
        CALL(TAV_IsPlugin());
        tav::g_compass = {7, 8.0, 9.0};
        CALL(TAV_Init(-7));
        CALL(tav::g_compass.doubleValue1);
        CALL(TAV_Quit());
        CALL(tav::g_calledInit);
    }
    CALL(TAV_GetKOBVersion());
    CALL(TAV_FAIL("someFunction", TAV_ENETWORK, "%s is %d", "seven", 7));
    show("TAV_GetError()", [] {
        std::ignore = TAV_FAIL("otherFunction", nullptr, "nothing");
        return TAV_GetError();
    });
    for (const int status : {-1, 0, 1, 2, 99, 100, 101, 102, 103}) {
        show("host's " + std::to_string(status), [&] { return tav::convertFromNAppError(status); });
    }
    CALL(getBooleanString(SDL_FALSE));
    CALL(getBooleanString(anyValue<SDL_bool>(-256)));
    for (const int key :
         {static_cast<int>(SDLK_ESCAPE), 229, 230, 231, static_cast<int>(SDLK_a), INT_MIN}) {
        CALL(TAV_GetKeyName(key));
    }
}

TEST_F(Calls, Hardware) {
    TAV_ScreenMetrics screen = {1, 2, 3, 4, 5.0};
    CALL(TAV_GetScreenMetrics(nullptr));
    tav::g_hardwareType = tav::kUnknownHardware;
    CALL(TAV_GetHardwareID());
    for (const bool spoofing : {false, true}) {
        for (const std::string& machine : split("|Fern|fern |fer|harrow++|mystery|ember")) {
            tav::g_hardwareType = tav::kUnknownHardware;
            device.profile = {};
            if (spoofing) {
                device.profile.portability["final_spoofing"] = machine;
            }
            device.profile.machine = spoofing ? "quern" : machine;
            show(machine, [] { return TAV_GetHardwareID(); });
        }
    }
    device.profile.machine = "fern";
    device.profile.portability["final_spoofing"] = "quern";
    CALL(TAV_GetHardware());
    tav::g_hardwareType = tav::kUnknownHardware;
    device.profile = {};
    CALL(TAV_GetScreenMetrics(&screen));
    CALL(screen.widthPixels + screen.heightPixels + screen.horizontalDpi + screen.dpiRatio);
}

TEST_F(Calls, Buffers) {
    using Query = int (*)(char*, int);
    const Query appinfo = [](char* to, int size) { return TAV_GetAppinfoValue("id", to, size); };
    const Query dataFile = [](char* to, int size) { return TAV_GetDataFilePath("f", to, size); };
    tavsim::Profile profile;
    profile.preferences = {{"deviceName", "\"Kitchen\""},
                           {"region", R"({"countryCode":"us","countryName":"Utopia"})"},
                           {"locale", R"({"languageCode":"en","countryCode":"us"})"}};
    profile.uniqueId = std::string(40, '7');
    profile.appinfo["id"] = "com.example.app";
    startDevice(profile);
    const std::pair<Query, int> queries[] = {
        {TAV_GetDeviceName, 8}, {TAV_GetRegionCountryCode, 3}, {TAV_GetRegionCountryName, 7},
        {TAV_GetLanguage, 6},   {TAV_GetUniqueID, 64},         {TAV_GetCallingPath, 3},
        {appinfo, 16},
    };
    for (const auto& [query, enough] : queries) {
        CALL(query(nullptr, 0));
        for (const int length : {INT_MIN, 0, enough - 1, enough}) {
            CALL(filled(query, length));
        }
    }
    char buffer[256] = {};
    CALL(TAV_GetDataFilePath("f", nullptr, 0));
    CALL(TAV_GetDataFilePath(nullptr, buffer, 0));
    CALL(TAV_GetDataFilePath(nullptr, buffer, 1));
    CALL(TAV_GetAppinfoValue(nullptr, buffer, 0));
    CALL(TAV_GetAppinfoValue(nullptr, buffer, 1));
    CALL(TAV_GetAppinfoValue("", buffer, 1));
    CALL(TAV_GetAppinfoValue("no such key", buffer, sizeof buffer));

    ASSERT_EQ(TAV_GetDataFilePath("", buffer, sizeof buffer), TAV_NOERROR);
    EXPECT_TRUE(std::filesystem::is_directory(buffer)) << buffer;
    const std::string path = std::string(buffer) + "/f";
    const int enough = static_cast<int>(path.size()) + 1;
    EXPECT_EQ(filled(dataFile, enough), "0 '" + path + "'");
    EXPECT_EQ(filled(dataFile, enough - 1).substr(0, 1), std::to_string(TAV_STRINGTOOSMALL));
}

TEST_F(Calls, VersionTexts) {
    const auto version = [] {
        TAV_OSVersion read;
        std::memset(&read, 'x', sizeof read);
        const std::string line = join(TAV_GetOSVersion(&read), ": ", read.major, ' ', read.minor,
                                      ' ', read.revision, " '", std::data(read.versionText), "'");
        const std::string text(read.versionText, sizeof read.versionText);
        EXPECT_EQ(text.find_first_not_of('\0', text.find('\0')), text.npos) << line;
        return line;
    };
    CALL(TAV_GetOSVersion(nullptr));
    for (const std::string& text :
         split("7||.|....|2.1.0|  2.1  |1.4|1.2.3.4|1.2.3beta|v1.2.3|1.2 build 3.4|"
               "Kora 3.0.5 (build 12.1)|1. 5|1. 5.6|1.5. 6|10 .5|.5.|\t4.5\n6|5..6|-1.+2.-3|"
               "2147483648.-2147483649.4294967297|99999999999999999999.-99999999999999999999|1.2." +
               std::string(251, '9') + "|1.2." + std::string(252, '9'))) {
        device.profile.properties["com.vire.properties.version"] = text;
        show("has", version);
    }
    device.profile.properties.clear();
    show("has", version);
}

TEST_F(Calls, Compass) {
    tav::g_calledInit = 0;
    tav::g_bCompassActive = 0;
    TAV_CompassReading reading = {};
    CALL(TAV_GetCompass(nullptr));
    TAV_Init(0);
    CALL(TAV_GetCompass(nullptr));
    CALL(device.deliverCompass({3, 12.5, -0.25}));  // although the compass is disabled
    SDL_Event event;
    ASSERT_EQ(SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_EVENTMASK(SDL_USEREVENT)), 1);
    EXPECT_EQ(event.user.data1, &tav::g_compass);
    CALL(TAV_EnableCompass(anyValue<SDL_bool>(2)));
    CALL(TAV_GetCompass(nullptr));
    CALL(TAV_GetCompass(&reading));
    CALL(reading.intValue + reading.doubleValue1 + reading.doubleValue2);
    while (SDL_PushEvent(&event) == 0) {}
    device.deliverCompass({4, 7.5, 0.25});  // the event is lost, the reading is not
    CALL(TAV_GetCompass(&reading));
    CALL(reading.intValue + reading.doubleValue1 + reading.doubleValue2);
    device.profile.refused.insert("compass");
    CALL(TAV_EnableCompass(SDL_FALSE));
    device.profile.plugin = true;
    CALL(TAV_EnableCompass(SDL_FALSE));
    CALL(tav::g_bCompassActive);
    device.profile = {};
    CALL(TAV_EnableCompass(SDL_FALSE));
    CALL(TAV_GetCompass(nullptr));
    TAV_EnableCompass(SDL_TRUE);
    TAV_Quit();
    CALL(TAV_GetCompass(&reading));
    CALL(reading.intValue + reading.doubleValue1 + reading.doubleValue2);
}

TEST_F(Calls, Purchases) {
    for (const int quantity : {0, 1, 2}) {
        CALL(TAV_PurchaseItem(nullptr, quantity, nullptr));
        CALL(TAV_PurchaseItem("sword \"%d\"", quantity, nullptr));
    }
    CALL(TAV_PurchaseItem("", 1, ""));
    CALL(TAV_GetAvailableItems());
    CALL(TAV_GetItemInfo(nullptr));
    CALL(TAV_GetItemInfo("shield"));
    CALL(TAV_GetPendingPurchaseInfo(nullptr));
    CALL(TAV_GetPendingPurchaseInfo("17"));
    CALL(TAV_GetItemCollectionJSON(nullptr));
    CALL(TAV_GetItemReceiptJSON(nullptr));
    CALL(TAV_GetItemJSON(nullptr));
    CALL(TAV_FreeItemCollection(nullptr));
    CALL(TAV_FreeItemReceipt(nullptr));
    CALL(TAV_FreeItemInfo(nullptr));
}

// What functions trace besides their entry, and what the library's internal functions trace.
TEST_F(Calls, Traces) {
    char text[256];
    TAV_Location location;
    TAV_ScreenMetrics screen;
    const TAV_ServiceParameters reply = {R"({"a":"12345"})", 0, 0};
    const TAV_ServiceParameters noReply = {"no JSON", 0, 0};
    const auto ignore = [](TAV_ServiceParameters*, void*) {};
    tavsim::Profile profile;
    profile.plugin = true;
    profile.preferences.emplace()["locale"] = R"({"languageCode":"en","countryCode":"us"})";
    startDevice(profile);
    tav::g_hardwareType = tav::kUnknownHardware;
    TAV_Init(3);
    TAV_IsPlugin();
    TAV_GetScreenMetrics(&screen);
    TAV_GetDeviceName(text, sizeof text);
    TAV_GetLanguage(text, sizeof text);
    TAV_GetLanguage(text, 2);
    tav::getKoraPrefSystemValue("no.property", text, sizeof text);
    TAV_GetOSVersion(nullptr);
    TAV_GetLocation(&location);
    TAV_EnableLocationTracking(SDL_TRUE);
    device.advance(0);
    TAV_SetFirewallPortStatus(1025, SDL_TRUE);
    TAV_GetParamString(&reply, "a", text, 5);
    TAV_GetParamString(&noReply, "a", text, 5);
    TAV_ServiceCallWithCallback("vire://none/x", "{}", ignore, nullptr, SDL_TRUE);
    device.advance(1000);
    TAV_ServiceCallWithCallback("vire://none/x", "{}", ignore, nullptr, SDL_TRUE);
    TAV_ServicesQuit();
    device.advance(1000);
    TAV_GetItemInfo("no item");
    TAV_JSRegistrationComplete();
    tavtest::methodNames();
    tavtest::callMethod("no method");
    TAV_Quit();
    std::set<std::string> seen;
    for (const std::string& line : trace()) {
        if (seen.insert(line.substr(0, line.find(' ', line.find(' ') + 1))).second) {
            note(line);
        }
    }
}

TEST_F(Calls, Services) {
    const auto ignore = [](TAV_ServiceParameters*, void*) {};
    device.profile.services["vire://com.example/refuses"].refuse = true;
    for (const char* uri : {"vire://com.example/silent", "vire://com.example/refuses"}) {
        device.profile.services[uri];
        CALL(TAV_ServiceCall(uri, "{\"no JSON"));
        CALL(TAV_ServiceCallWithCallback(uri, "{}", ignore, nullptr, SDL_TRUE));
        CALL(TAV_ServiceCallWithCallback(uri, "{}", ignore, nullptr, anyValue<SDL_bool>(-2)));
    }
    CALL(TAV_ServiceCall(nullptr, nullptr));
    CALL(TAV_ServiceCallWithCallback(nullptr, nullptr, ignore, nullptr, SDL_FALSE));
    CALL(TAV_UnregisterServiceCallback(nullptr));
    CALL(TAV_UnregisterServiceCallback(ignore));
}

}  // namespace
