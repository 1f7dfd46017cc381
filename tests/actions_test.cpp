#include "device_test.h"
#include "services.h"

namespace {

using tavtest::anyValue;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kVibrate[] = "vire://com.vire.vibrate/vibrate";
constexpr char kFirewall[] = "kora://com.vire.firewall/portCtrl";
constexpr char kMedia[] = "vire://com.vire.mediad/service/pauseAllMediaPlayback";
constexpr char kLaunch[] = "vire://com.vire.applicationManager/launch";

const std::string kLongText(100000, 'x');
const char* g_recipients[] = {"a@example.org", "\"b\" <%s>", nullptr, "c"};

class ActionsTest : public tavtest::DeviceTest {
protected:
    void SetUp() override {
        tavsim::Profile profile;
        for (const char* uri : {kVibrate, kFirewall, kMedia, kLaunch}) {
            profile.services[uri] = tavtest::keepingService(requests);
        }
        startDevice(profile);
    }

    tavtest::Requests requests;
};

TEST_F(ActionsTest, SendTheirRequestsInTheLibrarysName) {
    const auto sends = [&](int code, const std::string& traced, const tavtest::Requests& expected) {
        EXPECT_EQ(code, TAV_NOERROR);
        EXPECT_EQ(std::exchange(requests, {}), expected);
        EXPECT_EQ(trace().front(), "tav_f " + traced);
    };
    sends(TAV_Vibrate(0, 500), "TAV_Vibrate 0, 500",
          {{kVibrate, R"({"period":0, "duration":500})"}});
    sends(
        TAV_SetFirewallPortStatus(1025, anyValue<SDL_bool>(-1)),
        "TAV_SetFirewallPortStatus 1025, true",
        {{kFirewall,
          R"({"label": "tavportT_1025", "protocol": "TCP", "port": 1025, "isDestinationPort": true, "isEnabled": true})"},
         {kFirewall,
          R"({"label": "tavportU_1025", "protocol": "UDP", "port": 1025, "isDestinationPort": true, "isEnabled": true})"}});
    sends(
        TAV_SetFirewallPortStatus(2147483647, SDL_FALSE),
        "TAV_SetFirewallPortStatus 2147483647, false",
        {{kFirewall,
          R"({"label": "tavportT_2147483647", "protocol": "TCP", "port": 2147483647, "isDestinationPort": true, "isEnabled": false})"},
         {kFirewall,
          R"({"label": "tavportU_2147483647", "protocol": "UDP", "port": 2147483647, "isDestinationPort": true, "isEnabled": false})"}});
    sends(TAV_NotifyMusicPlaying(anyValue<SDL_bool>(2)), "TAV_NotifyMusicPlaying true",
          {{kMedia, "{}"}});
    sends(TAV_LaunchBrowser("http://x/?q=\"%d\""), "TAV_LaunchBrowser http://x/?q=\"%d\"",
          {{kLaunch,
            R"({ "id": "com.vire.app.browser", "params": {"target": "http://x/?q="%d"" } })"}});
    sends(TAV_LaunchEmail("S\"", kLongText.c_str()), "TAV_LaunchEmail S\", " + kLongText,
          {{kLaunch, R"({ "id": "com.vire.app.email", "params": {"summary": "S"", "text": ")" +
                         kLongText + R"(" } })"}});
    sends(
        TAV_LaunchEmailTo("S", "", 2, g_recipients), "TAV_LaunchEmailTo S, ",
        {{kLaunch,
          R"({ "id": "com.vire.app.email", "params": {"summary": "S", "text": "", "recipients": [ {"type":"email", "role":1, "value":"a@example.org"},{"type":"email", "role":1, "value":""b" <%s>"}] } })"}});
    EXPECT_EQ(tavtest::optionsSent(device), std::set{true});
    EXPECT_THAT(device.openCalls(), IsEmpty());
}

TEST_F(ActionsTest, TheFirewallIsAskedNothingMoreAfterARefusal) {
    for (const int refused : {1, 2}) {
        requests.clear();
        device.failNth(tavsim::Fault::Dispatch, refused);
        EXPECT_EQ(TAV_SetFirewallPortStatus(1025, SDL_TRUE), TAV_ECONNECTION);
        EXPECT_EQ(std::ssize(requests), refused - 1);
    }
}

TEST_F(ActionsTest, RefuseBadArguments) {
    const auto refuses = [&](int result, const char* function, const char* message) {
        EXPECT_EQ(result, TAV_INVALIDINPUT);
        expectFailure(function, message);
        EXPECT_THAT(requests, IsEmpty());
    };
    refuses(TAV_Vibrate(-1, -1), "TAV_Vibrate", "durationMS must be >= 0");
    refuses(TAV_Vibrate(-5, 0), "TAV_Vibrate", "periodMS must be >= 0");
    refuses(TAV_SetFirewallPortStatus(1024, SDL_TRUE), "TAV_SetFirewallPortStatus",
            "port must be greater than 1024");
    refuses(TAV_LaunchBrowser(nullptr), "TAV_LaunchBrowser", "NULL URL sent to TAV_LaunchBrowser");
    refuses(TAV_LaunchEmail(nullptr, nullptr), "TAV_LaunchEmail", "Subject is null");
    refuses(TAV_LaunchEmail("", nullptr), "TAV_LaunchEmail", "Body is null");
    refuses(TAV_LaunchEmailTo("", nullptr, -1, g_recipients), "TAV_LaunchEmail", "Body is null");
    const char* to = "TAV_LaunchEmailTo";
    refuses(TAV_LaunchEmailTo(nullptr, nullptr, 1, nullptr), to, "Subject is null");
    refuses(TAV_LaunchEmailTo("", nullptr, 1, nullptr), to, "Body is null");
    refuses(TAV_LaunchEmailTo("", "", 1, nullptr), to, "recipients is null");
    refuses(TAV_LaunchEmailTo("", "", 3, g_recipients), to, "bad recipient");
}

TEST_F(ActionsTest, TraceAroundTheirChecksAndSucceedWhereThereIsNothingToDo) {
    EXPECT_EQ(TAV_Vibrate(100, 0), TAV_NOERROR);
    EXPECT_EQ(TAV_NotifyMusicPlaying(SDL_FALSE), TAV_NOERROR);
    TAV_LaunchBrowser(nullptr);
    TAV_LaunchEmailTo("S", "B", 4, g_recipients);
    TAV_LaunchEmailTo(nullptr, "B", 0, g_recipients);
    EXPECT_THAT(
        trace(),
        ElementsAre("tav_f TAV_Vibrate 100, 0", "tav_f TAV_NotifyMusicPlaying false",
                    "tav_e TAV_LaunchBrowser NULL URL sent to TAV_LaunchBrowser",
                    "tav_f TAV_LaunchEmailTo S, B",
                    "tav_f TAV_LaunchEmailTo Recipient 0: a@example.org",
                    "tav_f TAV_LaunchEmailTo Recipient 1: \"b\" <%s>",
                    "tav_e TAV_LaunchEmailTo bad recipient", "tav_f TAV_LaunchEmailTo (null), B",
                    "tav_f TAV_LaunchEmail (null), B", "tav_e TAV_LaunchEmail Subject is null"));
    EXPECT_THAT(requests, IsEmpty());
}

}  // namespace
