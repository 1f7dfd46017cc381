// The simulated device: profiles, bus, files and journal.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "simulator/device/claim.h"
#include "transcript.h"

namespace {

using tavtest::repliesOf;

using ProfileTest = tavtest::TranscriptTest;

TEST_F(ProfileTest, NamesTheFieldThatIsWrong) {
    for (const auto& [name, content] : seeds("profile")) {
        std::string error = "none";
        tavsim::parseProfile(content, "/none/p.json", &error);
        note(name + ": " + error);
    }
}

class BusTest : public tavtest::TranscriptTest {
protected:
    void startWith(std::map<std::string, tavsim::Service> services) {
        tavsim::Profile profile;
        profile.services = std::move(services);
        startDevice(profile);
        note("");
    }
};

TEST_F(BusTest, RepliesComeInDueOrderThenInOrderOfDispatch) {
    startWith({{"slow", repliesOf({"slow"}, 30)},
               {"fast", repliesOf({"fast"}, 10)},
               {"now", repliesOf({"a", "b"})}});
    for (const char* uri : {"slow", "fast", "now", "now", "now"}) {
        call(uri);
    }
    // Calls of one service take turns through its replies and stay at the last.
    CALL(device.advance(30));
    CALL(device.openCalls().size());
}

TEST_F(BusTest, SubscriptionsPlayTheirListAndRepeatWhereAsked) {
    tavsim::Service once = repliesOf({"a", "b"}, 5, 10);
    once.repeat = false;
    startWith({{"once", once}, {"again", repliesOf({"x", std::nullopt}, 0, 10)}});
    subscribe("once");
    CALL(device.advance(100));
    CALL(device.openCalls("once").size());
    const int again = subscribe("again");
    CALL(device.advance(20));
    bus.ksCancelCall(again);
    CALL(device.advance(100));
}

TEST_F(BusTest, SilenceRefusalAndUnknownServices) {
    tavsim::Service shut;
    shut.refuse = true;
    startWith({{"silent", {}}, {"shut", shut}});
    device.profile.refused = {"vire://com.vire.vibrate/vibrate"};
    CALL(call("silent") > 0);
    CALL(call("shut"));
    CALL(bus.ksCall("vire://com.vire.vibrate/vibrate", "{}", true));
    CALL(call("vire://nobody/home") > 0);
    CALL(call(nullptr) > 0);
    CALL(device.advance(1000));
}

// A reply function that calls the service again at once must not keep the pump from returning.
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

TEST_F(BusTest, ServicesLeaveTheirMarkInTheJournal) {
    constexpr char kVibrate[] = "vire://com.vire.vibrate/vibrate";
    constexpr char kPort[] = "kora://com.vire.firewall/portCtrl";
    constexpr char kLaunch[] = "vire://com.vire.applicationManager/launch";
    CALL(bus.ksCall(kVibrate, R"({"period":1})", true) > 0);
    CALL(bus.ksCall(kVibrate, R"({"period":1, "duration":50})", true) > 0);
    CALL(bus.ksCall(kPort, R"({"protocol":"UDP","port":1025,"isEnabled":false})", true) > 0);
    CALL(bus.ksCall(kLaunch, "{\"id\": \"broken\" quote\"}", true) > 0);
    CALL(bus.ksCall("u\"r\\i\n\x01", "\xff\xc3\xa9", true) > 0);
    CALL(device.advance(50));
    // The end of so long a duration must not overflow into the past.
    bus.ksCall(kVibrate, R"({"period":1,"duration":9223372036854775807})", true);
    CALL(device.advance(1000));
}

TEST_F(ProfileTest, FilesAreMadeFromTheProfileOnceAndThenLeftAlone) {
    tavsim::Profile profile;
    profile.preferences.emplace()["deviceName"] = "\"O'Neill\"";
    profile.uniqueId = "0123";
    profile.templates = {{"KOB.pub", "text"}};
    tavsim::Options options;
    options.root = testing::TempDir() + "/device-" + std::to_string(getpid());
    const std::string own = device.root();
    EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
    ASSERT_TRUE(device.start(profile, options));
    EXPECT_FALSE(std::filesystem::exists(own)) << "a root of its own goes with the device";
    std::ofstream(options.root + "/proc/nduid") << "edited";
    profile.preferences->at("deviceName") = "\"Other\"";
    ASSERT_TRUE(device.start(profile, options));
    EXPECT_EQ(filled(TAV_GetDeviceName, 64), "0 'O'Neill'");
    EXPECT_EQ(filled(TAV_GetUniqueID, 64), "0 'edited'");
    device.stop();
    EXPECT_TRUE(std::filesystem::exists(options.root + "/usr/vire/ks2/templates/KOB.pub"));
    std::filesystem::remove_all(options.root);
}

TEST_F(ProfileTest, ADiskThatIsFullIsToldAtTheStart) {
    tavsim::Profile profile;
    profile.uniqueId = std::string(1 << 17, '1');
    const auto former = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit half = {1 << 16, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &half), 0);
    std::string error;
    EXPECT_FALSE(device.start(profile, {}, &error));
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, former);
    EXPECT_THAT(error, testing::EndsWith("/proc/nduid: cannot be made below the device's root"));
}

TEST(ClaimTest, EndsWithItsProcessAndNotBefore) {
    const std::string folder = testing::TempDir() + "/claim-" + std::to_string(getpid());
    std::filesystem::create_directory(folder);
    for (const auto& [what, keepsClaim] : {std::pair("closefrom 0", true),
                                           {"a child that stays", true},
                                           {"a program that stays", true},
                                           {"exec", false}}) {
        SCOPED_TRACE(what);
        const pid_t holder = fork();
        if (holder == 0) {
            setpgid(0, 0);
            const bool isClaimed = tavsim::claim(folder, tavsim::kDeviceClaim);
            const std::string way = isClaimed ? what : "";
            if (way.starts_with("close")) {
                closefrom(0);
            } else if (way.starts_with("a ") && fork() == 0) {
                way == "a child that stays" ? pause() : execlp("sleep", "sleep", "600", nullptr);
                _exit(1);
            } else if (way == "exec") {
                execlp("sh", "sh", "-c", "kill -STOP $$", nullptr);
            }
            isClaimed ? raise(SIGSTOP) : 0;
            _exit(1);
        }
        int status = 0;
        waitpid(holder, &status, WUNTRACED);
        EXPECT_TRUE(WIFSTOPPED(status));
        EXPECT_EQ(tavsim::claimant(folder, tavsim::kDeviceClaim), keepsClaim ? holder : 0);
        EXPECT_EQ(tavsim::claim(folder, tavsim::kDeviceClaim), !keepsClaim);
        kill(holder, SIGKILL);
        waitpid(holder, nullptr, 0);
        EXPECT_TRUE(tavsim::claim(folder, tavsim::kDeviceClaim));
        EXPECT_TRUE(tavsim::isClaimed(folder, tavsim::kDeviceClaim));
        tavsim::removeClaim(folder, tavsim::kDeviceClaim);
        EXPECT_TRUE(std::filesystem::is_empty(folder));
        kill(-holder, SIGKILL);
    }
    std::filesystem::remove(folder);
}

// AddressSanitizer reports a queue that is used after its destruction.
TEST_F(BusTest, AProgramMayEndWhileRepliesAreOnTheirWay) {
    EXPECT_EXIT((call("a://unknown"), std::exit(0)), testing::ExitedWithCode(0), "");
}

}  // namespace
