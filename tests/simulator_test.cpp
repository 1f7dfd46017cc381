// The simulated device: profiles, bus, files and journal.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/hkscaller.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "transcript.h"

namespace {

using tavtest::repliesOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using SimulatorTest = tavtest::DeviceTest;
using ProfileTest = tavtest::TranscriptTest;

TEST_F(ProfileTest, NamesTheFieldThatIsWrong) {
    for (const auto& [name, content] : seeds("profile")) {
        std::string error = "none";
        tavsim::parseProfile(content, "/none/p.json", &error);
        note(name + ": " + error);
    }
}

class BusTest : public SimulatorTest {
protected:
    void startWith(std::map<std::string, tavsim::Service> services) {
        tavsim::Profile profile;
        profile.services = std::move(services);
        startDevice(profile);
    }

    int call(const char* uri) {
        return bus.ksCallWithResponse(uri, "{}", false, receive, &received);
    }

    static std::string reply(int token, const std::string& text) {
        return std::to_string(token) + " " + text;
    }

    static void receive(int token, const char* text, void* received) {
        static_cast<std::vector<std::string>*>(received)->push_back(
            reply(token, text != nullptr ? text : "(none)"));
    }

    HKSCaller& bus = *NApp_GetKSCaller();
    std::vector<std::string> received;
};

TEST_F(BusTest, RepliesComeInDueOrderThenInOrderOfDispatch) {
    startWith({{"slow", repliesOf({"slow"}, 30)},
               {"fast", repliesOf({"fast"}, 10)},
               {"now", repliesOf({"a", "b"})}});
    const int slow = call("slow");
    const int fast = call("fast");
    const int first = call("now");
    const int second = call("now");
    const int third = call("now");
    EXPECT_THAT(received, IsEmpty());
    device.advance(30);
    // Calls of one service take turns through its replies and stay at the last.
    EXPECT_THAT(received, ElementsAre(reply(first, "a"), reply(second, "b"), reply(third, "b"),
                                      reply(fast, "fast"), reply(slow, "slow")));
    EXPECT_THAT(device.openCalls(), IsEmpty());
}

TEST_F(BusTest, SubscriptionsPlayTheirListAndRepeatWhereAsked) {
    tavsim::Service once = repliesOf({"a", "b"}, 5, 10);
    once.repeat = false;
    startWith({{"once", once}, {"again", repliesOf({"x", std::nullopt}, 0, 10)}});
    const int first = bus.ksCallWithSubscription("once", "{}", false, receive, &received);
    device.advance(100);
    EXPECT_THAT(received, ElementsAre(reply(first, "a"), reply(first, "b")));
    EXPECT_THAT(device.openCalls("once"), ElementsAre(first));
    received.clear();
    const int again = bus.ksCallWithSubscription("again", "{}", false, receive, &received);
    device.advance(20);
    EXPECT_THAT(received,
                ElementsAre(reply(again, "x"), reply(again, "(none)"), reply(again, "x")));
    bus.ksCancelCall(again);
    device.advance(100);
    EXPECT_EQ(received.size(), 3U);
}

TEST_F(BusTest, SilenceRefusalAndUnknownServices) {
    tavsim::Service shut;
    shut.refuse = true;
    startWith({{"silent", {}}, {"shut", shut}});
    device.profile.refused = {"vire://com.vire.vibrate/vibrate"};
    EXPECT_NE(call("silent"), -1);
    EXPECT_EQ(call("shut"), -1);
    EXPECT_EQ(bus.ksCall("vire://com.vire.vibrate/vibrate", "{}", true), -1);
    const int unknown = call("vire://nobody/home");
    EXPECT_NE(call(nullptr), -1);
    device.advance(1000);
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(received[0], reply(unknown, R"({"returnValue":false,"errorCode":-1,"errorText":)"
                                          R"("no such service: vire://nobody/home"})"));
}

// A reply that causes the next call at once must leave the application room in between.
void callAgain(int, const char*, void* context) {
    ++*static_cast<int*>(context);
    NApp_GetKSCaller()->ksCallWithResponse("s", "{}", false, callAgain, context);
}

TEST_F(BusTest, EndlessCausationDoesNotHoldThePump) {
    startWith({{"s", repliesOf({"reply"})}});
    int replies = 0;
    bus.ksCallWithResponse("s", "{}", false, callAgain, &replies);
    for (const int expected : {1, 2}) {
        device.pump();
        EXPECT_EQ(replies, expected);
    }
}

TEST_F(SimulatorTest, ServicesLeaveTheirMarkInTheJournal) {
    const struct {
        const char* uri;
        const char* payload;
        const char* line;
    } rows[] = {
        {"vire://com.vire.vibrate/vibrate", R"({"period":1, "duration":50})",
         R"("what":"vibrator","outcome":"on, period 1 ms"})"},
        {"kora://com.vire.firewall/portCtrl", R"({"protocol":"TCP","port":1025,"isEnabled":true})",
         R"("what":"port 1025 tcp","outcome":"open"})"},
        {"kora://com.vire.firewall/portCtrl", R"({"protocol":"UDP","port":1025,"isEnabled":false})",
         R"("what":"port 1025 udp","outcome":"closed"})"},
        {"vire://com.vire.applicationManager/launch", R"({"id":"a.b"})",
         R"("what":"launched","outcome":"a.b"})"},
        {"vire://com.vire.applicationManager/launch", "{\"id\": \"broken\" quote\"}",
         R"("what":"request not understood")"},
    };
    for (const auto& row : rows) {
        NApp_GetKSCaller()->ksCall(row.uri, row.payload, true);
        EXPECT_THAT(device.journal().back(), HasSubstr(row.line));
    }
    device.advance(50);
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("at":50,"kind":"device","what":"vibrator")"));
    // A stretch that ends beyond the last moment there is does not end in the past.
    NApp_GetKSCaller()->ksCall("vire://com.vire.vibrate/vibrate",
                               R"({"period":1,"duration":9223372036854775807})", true);
    device.advance(1000);
    EXPECT_THAT(device.journal().back(), HasSubstr("on, period 1 ms"));
}

TEST_F(SimulatorTest, JournalLinesAreJsonWhateverTheApplicationSends) {
    NApp_GetKSCaller()->ksCall("u\"r\\i\n\x01", "\xff\xc3\xa9", false);
    EXPECT_THAT(device.journal().back(),
                HasSubstr("\"uri\":\"u\\\"r\\\\i\\u000a\\u0001\","
                          "\"payload\":\"\xef\xbf\xbd\xc3\xa9\",\"option\":false"));
}

TEST_F(SimulatorTest, FilesAreMadeFromTheProfileOnceAndThenLeftAlone) {
    tavsim::Profile profile;
    profile.preferences.emplace()["deviceName"] = "\"O'Neill\"";
    profile.uniqueId = "0123";
    profile.templates = {{"KOB.pub", "text"}};
    tavsim::Options options;
    options.root = testing::TempDir() + "/device-" + std::to_string(getpid());
    ASSERT_TRUE(device.start(profile, options));
    std::ofstream(options.root + "/proc/nduid") << "edited";
    profile.preferences->at("deviceName") = "\"Other\"";
    ASSERT_TRUE(device.start(profile, options));
    char text[64];
    EXPECT_EQ(TAV_GetDeviceName(text, sizeof text), TAV_NOERROR);
    EXPECT_STREQ(text, "O'Neill");
    EXPECT_EQ(TAV_GetUniqueID(text, sizeof text), TAV_NOERROR);
    EXPECT_STREQ(text, "edited");
    device.stop();
    EXPECT_TRUE(std::filesystem::exists(options.root + "/usr/vire/ks2/templates/KOB.pub"));
    std::filesystem::remove_all(options.root);
}

// The sanitizers see a queue that is used after its end.
TEST_F(SimulatorTest, AProgramMayEndWhileRepliesAreOnTheirWay) {
    const auto endWithReplyQueued = [] {
        NApp_GetKSCaller()->ksCallWithResponse(
            "a://unknown", "{}", false, [](int, const char*, void*) {}, nullptr);
        std::exit(0);
    };
    EXPECT_EXIT(endWithReplyQueued(), testing::ExitedWithCode(0), "");
}

TEST_F(SimulatorTest, AFreshRootIsPrivateAndGoesWithTheDevice) {
    const std::string root = device.root();
    EXPECT_EQ(std::filesystem::status(root).permissions(), std::filesystem::perms::owner_all);
    device.stop();
    EXPECT_FALSE(std::filesystem::exists(root));
}

}  // namespace
