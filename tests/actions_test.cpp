#include <functional>

#include "device_test.h"
#include "services.h"

namespace {

using tavtest::Requests;
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
        DeviceTest::SetUp();
        begin();
    }

    void begin() {
        sim::Profile profile;
        for (const char* uri : {kVibrate, kFirewall, kMedia, kLaunch}) {
            profile.services[uri] = tavtest::keepingService(requests);
        }
        startDevice(profile);
        requests.clear();
    }

    Requests requests;
};

struct Action {
    std::string function;
    std::string arguments;  // as traced
    std::function<int()> call;
    Requests requests;
};

std::vector<Action> actions() {
    return {
        {"TAV_Vibrate",
         "0, 500",
         [] { return TAV_Vibrate(0, 500); },
         {{kVibrate, R"({"period":0, "duration":500})"}}},
        {"TAV_SetFirewallPortStatus",
         "1025, true",
         [] { return TAV_SetFirewallPortStatus(1025, tavtest::anyValue<SDL_bool>(-1)); },
         {{kFirewall,
           R"({"label": "tavportT_1025", "protocol": "TCP", "port": 1025, "isDestinationPort": true, "isEnabled": true})"},
          {kFirewall,
           R"({"label": "tavportU_1025", "protocol": "UDP", "port": 1025, "isDestinationPort": true, "isEnabled": true})"}}},
        {"TAV_SetFirewallPortStatus",
         "2147483647, false",
         [] { return TAV_SetFirewallPortStatus(2147483647, SDL_FALSE); },
         {{kFirewall,
           R"({"label": "tavportT_2147483647", "protocol": "TCP", "port": 2147483647, "isDestinationPort": true, "isEnabled": false})"},
          {kFirewall,
           R"({"label": "tavportU_2147483647", "protocol": "UDP", "port": 2147483647, "isDestinationPort": true, "isEnabled": false})"}}},
        {"TAV_NotifyMusicPlaying",
         "true",
         [] { return TAV_NotifyMusicPlaying(tavtest::anyValue<SDL_bool>(2)); },
         {{kMedia, "{}"}}},
        {"TAV_LaunchBrowser",
         "http://x/?q=\"%d\"",
         [] { return TAV_LaunchBrowser("http://x/?q=\"%d\""); },
         {{kLaunch,
           R"({ "id": "com.vire.app.browser", "params": {"target": "http://x/?q="%d"" } })"}}},
        {"TAV_LaunchEmail",
         "S\", " + kLongText,
         [] { return TAV_LaunchEmail("S\"", kLongText.c_str()); },
         {{kLaunch, R"({ "id": "com.vire.app.email", "params": {"summary": "S"", "text": ")" +
                        kLongText + R"(" } })"}}},
        {"TAV_LaunchEmailTo",
         "S, B",
         [] { return TAV_LaunchEmailTo("S", "B", 1, g_recipients); },
         {{kLaunch,
           R"({ "id": "com.vire.app.email", "params": {"summary": "S", "text": "B", "recipients": [ {"type":"email", "role":1, "value":"a@example.org"}] } })"}}},
        {"TAV_LaunchEmailTo",
         ", ",
         [] { return TAV_LaunchEmailTo("", "", 2, g_recipients); },
         {{kLaunch,
           R"({ "id": "com.vire.app.email", "params": {"summary": "", "text": "", "recipients": [ {"type":"email", "role":1, "value":"a@example.org"},{"type":"email", "role":1, "value":""b" <%s>"}] } })"}}},
    };
}

TEST_F(ActionsTest, SendTheirRequestsInTheLibrarysName) {
    for (const Action& action : actions()) {
        SCOPED_TRACE(action.function);
        begin();
        EXPECT_EQ(action.call(), TAV_NOERROR);
        EXPECT_EQ(requests, action.requests);
        EXPECT_EQ(tavtest::optionsSent(device), std::set{true});
        EXPECT_EQ(trace().front(), "tav_f " + action.function + " " + action.arguments);
        EXPECT_THAT(device.openCalls(), IsEmpty());
    }
}

// Each time another request is refused, or another step of building a payload finds no memory: the
// requests before it have gone out, and no other.
TEST_F(ActionsTest, StopWhereTheBusOrTheMemoryFails) {
    for (const Action& action : actions()) {
        SCOPED_TRACE(action.function);
        begin();
        action.call();
        const int allocations = device.occurrences(sim::Fault::StringAllocation);
        const int dispatches = device.occurrences(sim::Fault::Dispatch);
        for (int nth = 1; nth <= allocations + dispatches; ++nth) {
            begin();
            const bool isAllocation = nth <= allocations;
            device.failNth(sim::Fault::StringAllocation, isAllocation ? nth : 0);
            device.failNth(sim::Fault::Dispatch, isAllocation ? 0 : nth - allocations);
            EXPECT_EQ(action.call(), TAV_ECONNECTION);
            expectFailure(action.function, "Unable to communicate with app card");
            const size_t sent = isAllocation ? 0 : static_cast<size_t>(nth - allocations - 1);
            EXPECT_THAT(requests, testing::SizeIs(sent));
        }
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
    for (const int port : {1024, 0, -2000}) {
        refuses(TAV_SetFirewallPortStatus(port, SDL_TRUE), "TAV_SetFirewallPortStatus",
                "port must be greater than 1024");
    }
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

TEST_F(ActionsTest, SucceedWithoutARequestWhereThereIsNothingToDo) {
    EXPECT_EQ(TAV_Vibrate(100, 0), TAV_NOERROR);
    EXPECT_EQ(TAV_NotifyMusicPlaying(SDL_FALSE), TAV_NOERROR);
    EXPECT_THAT(trace(),
                ElementsAre("tav_f TAV_Vibrate 100, 0", "tav_f TAV_NotifyMusicPlaying false"));
    EXPECT_THAT(requests, IsEmpty());
}

TEST_F(ActionsTest, TraceBeforeAndAfterTheirChecks) {
    TAV_LaunchBrowser(nullptr);
    EXPECT_THAT(trace(), ElementsAre("tav_e TAV_LaunchBrowser NULL URL sent to TAV_LaunchBrowser"));
    TAV_LaunchEmailTo("S", "B", 4, g_recipients);
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_LaunchEmailTo S, B",
                                     "tav_f TAV_LaunchEmailTo Recipient 0: a@example.org",
                                     "tav_f TAV_LaunchEmailTo Recipient 1: \"b\" <%s>",
                                     "tav_e TAV_LaunchEmailTo bad recipient"));
    TAV_LaunchEmailTo(nullptr, "B", 0, g_recipients);
    EXPECT_THAT(trace(),
                ElementsAre("tav_f TAV_LaunchEmailTo (null), B", "tav_f TAV_LaunchEmail (null), B",
                            "tav_e TAV_LaunchEmail Subject is null"));
}

}  // namespace
