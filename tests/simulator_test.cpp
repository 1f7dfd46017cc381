// The simulated device: profiles, bus, time, files, journal and control.
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "device_test.h"
#include "platform/hkscaller.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using SimulatorTest = tavtest::DeviceTest;

std::string errorOf(const std::string& json) {
    std::string error;
    const bool isGood = sim::parseProfile(json, "p.json", &error).has_value();
    return isGood ? "none" : error;
}

TEST(ProfileTest, NamesTheFieldThatIsWrong) {
    const struct {
        const char* json;
        const char* error;
    } rows[] = {
        {"{}", "none"},
        {"[]", "p.json: must be an object"},
        {"{\"machine\":", "p.json: not JSON: "},
        {R"({"machien":"x"})", "p.json: machien: unknown field"},
        {R"({"a\nb":"x"})", R"(p.json: a\u000ab: unknown field)"},
        {R"({"refuse":["a\nb"]})",
         R"(p.json: refuse[0]: "a\u000ab" is nothing that the host can refuse)"},
        {R"({"machine":5})", "p.json: machine: must be a string"},
        {R"({"root":"yes"})", "p.json: root: must be true or false"},
        {R"({"appinfo":{"id":1}})", "p.json: appinfo.id: must be a string"},
        {R"({"uniqueId":"a\u0000b"})", "p.json: uniqueId: must not hold a zero byte"},
        {R"({"refuse":["keyboard","doorbell"]})",
         "p.json: refuse[1]: \"doorbell\" is nothing that the host can refuse"},
        {R"({"compass":{"interval":0}})",
         "p.json: compass.interval: must be a whole number from 1"},
        {R"({"compass":{"readings":[[1,2.0,3.0],[1,2.0]]}})",
         "p.json: compass.readings[1]: must be a list of a whole number and two numbers"},
        {R"({"location":{"fixes":[{"latitude":"x"}]}})",
         "p.json: location.fixes[0].latitude: must be a number"},
        {R"({"items":[{"title":"x"}]})", "p.json: items[0]: must have an id"},
        {R"({"items":[{"id":"x","purchase":"maybe"}]})",
         "p.json: items[0].purchase: must be succeeds, refused or silent"},
        {R"({"services":{"a://b":{"delay":1.5}}})",
         "p.json: services.a://b.delay: must be a whole"},
        {R"({"services":{"a://b":{"repeat":true}}})",
         "p.json: services.a://b.repeat: needs \"every\""},
        {R"({"templates":{"../x":""}})", "p.json: templates.../x: must be named like a file"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(errorOf(row.json), testing::StartsWith(row.error)) << row.json;
    }
}

TEST(ProfileTest, EveryDeviceThatComesWithItIsWhole) {
    int count = 0;
    for (const auto& file : std::filesystem::directory_iterator(sim::profileFolder())) {
        std::string error;
        const auto profile = sim::readProfile(file.path(), &error);
        ASSERT_TRUE(profile) << error;
        EXPECT_TRUE(profile->machine && profile->preferences && profile->uniqueId);
        EXPECT_FALSE(profile->title.empty() || profile->items.empty() || profile->services.empty());
        EXPECT_EQ(profile->templates.size(), 4U);
        ++count;
    }
    EXPECT_EQ(count, 9);
}

struct Received {
    std::vector<std::string> texts;
};

void record(int token, const char* reply, void* context) {
    static_cast<Received*>(context)->texts.push_back(std::to_string(token) + " " +
                                                     (reply != nullptr ? reply : "(none)"));
}

sim::Profile profileWith(std::map<std::string, sim::Service> services) {
    sim::Profile profile;
    profile.services = std::move(services);
    return profile;
}

class BusTest : public SimulatorTest {
protected:
    int call(const char* uri) {
        return bus.ksCallWithResponse(uri, "{}", false, record, &received);
    }
    int subscribe(const char* uri) {
        return bus.ksCallWithSubscription(uri, "{}", false, record, &received);
    }
    std::string reply(int token, const char* text) { return std::to_string(token) + " " + text; }

    HKSCaller& bus = *NApp_GetKSCaller();
    Received received;
};

TEST_F(BusTest, RepliesComeInDueOrderThenInOrderOfDispatch) {
    startDevice(profileWith({{"slow", {{"slow"}, false, 30, 0, false, {}}},
                             {"fast", {{"fast"}, false, 10, 0, false, {}}},
                             {"now", {{"now"}, false, 0, 0, false, {}}}}));
    const int slow = call("slow");
    const int fast = call("fast");
    const int first = call("now");
    const int second = call("now");
    EXPECT_THAT(received.texts, IsEmpty());
    device.advance(30);
    EXPECT_THAT(received.texts, ElementsAre(reply(first, "now"), reply(second, "now"),
                                            reply(fast, "fast"), reply(slow, "slow")));
    EXPECT_THAT(device.openCalls(), IsEmpty());
}

TEST_F(BusTest, SubscriptionsPlayTheirListAndRepeatWhereAsked) {
    startDevice(profileWith({{"once", {{"a", "b"}, false, 5, 10, false, {}}},
                             {"again", {{"x", std::nullopt}, true, 0, 10, false, {}}}}));
    const int once = subscribe("once");
    device.advance(100);
    EXPECT_THAT(received.texts, ElementsAre(reply(once, "a"), reply(once, "b")));
    EXPECT_THAT(device.openCalls("once"), ElementsAre(once));
    received.texts.clear();
    const int again = subscribe("again");
    device.advance(20);
    EXPECT_THAT(received.texts,
                ElementsAre(reply(again, "x"), reply(again, "(none)"), reply(again, "x")));
    bus.ksCancelCall(again);
    device.advance(100);
    EXPECT_EQ(received.texts.size(), 3U);
}

TEST_F(BusTest, CallsTakeTurnsAndStayAtTheLast) {
    startDevice(profileWith({{"turns", {{"a", "b"}, false, 0, 0, false, {}}}}));
    for (int i = 0; i < 3; ++i) {
        call("turns");
        device.pump();
    }
    EXPECT_THAT(received.texts, ElementsAre(HasSubstr("a"), HasSubstr("b"), HasSubstr("b")));
}

TEST_F(BusTest, SilenceRefusalAndUnknownServices) {
    sim::Profile profile = profileWith({{"silent", {}}, {"shut", {{}, false, 0, 0, true, {}}}});
    profile.refused = {"vire://com.vire.vibrate/vibrate"};
    startDevice(profile);
    EXPECT_NE(call("silent"), -1);
    EXPECT_EQ(call("shut"), -1);
    EXPECT_EQ(bus.ksCall("vire://com.vire.vibrate/vibrate", "{}", true), -1);
    const int unknown = call("vire://nobody/home");
    EXPECT_NE(call(nullptr), -1);
    device.advance(1000);
    ASSERT_EQ(received.texts.size(), 2U);
    EXPECT_EQ(received.texts[0],
              reply(unknown, R"({"returnValue":false,"errorCode":-1,"errorText":)"
                             R"("no such service: vire://nobody/home"})"));
}

TEST_F(BusTest, CancellingIsFinalAndUnknownTokensDoNothing) {
    startDevice(profileWith({{"s", {{"reply"}, false, 10, 0, false, {}}}}));
    const int cancelled = call("s");
    const int kept = call("s");
    bus.ksCancelCall(cancelled);
    bus.ksCancelCall(cancelled);
    bus.ksCancelCall(-1);
    bus.ksCancelCall(999999);
    EXPECT_FALSE(device.deliver(cancelled, "late"));
    device.advance(10);
    EXPECT_THAT(received.texts, ElementsAre(reply(kept, "reply")));
}

// A reply that causes the next call at once must leave the application room in between.
void callAgain(int, const char*, void* context) {
    ++*static_cast<int*>(context);
    NApp_GetKSCaller()->ksCallWithResponse("s", "{}", false, callAgain, context);
}

TEST_F(BusTest, EndlessCausationDoesNotHoldThePump) {
    startDevice(profileWith({{"s", {{"reply"}, false, 0, 0, false, {}}}}));
    int replies = 0;
    bus.ksCallWithResponse("s", "{}", false, callAgain, &replies);
    device.pump();
    EXPECT_EQ(replies, 1);
    device.pump();
    EXPECT_EQ(replies, 2);
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
}

TEST_F(SimulatorTest, JournalLinesAreJsonWhateverTheApplicationSends) {
    NApp_GetKSCaller()->ksCall("u\"r\\i\n\x01", "\xff\xc3\xa9", false);
    EXPECT_THAT(device.journal().back(),
                HasSubstr("\"uri\":\"u\\\"r\\\\i\\u000a\\u0001\","
                          "\"payload\":\"\xef\xbf\xbd\xc3\xa9\",\"option\":false"));
}

TEST_F(SimulatorTest, FilesAreMadeFromTheProfileOnceAndThenLeftAlone) {
    sim::Profile profile;
    profile.preferences.emplace()["deviceName"] = "\"O'Neill\"";
    profile.uniqueId = "0123";
    profile.templates = {{"KOB.pub", "text"}};
    const std::string root = testing::TempDir() + "/device-" + std::to_string(getpid());
    sim::Options options;
    options.root = root;
    ASSERT_TRUE(device.start(profile, options));
    std::ofstream(root + "/proc/nduid") << "edited";
    profile.preferences->at("deviceName") = "\"Other\"";
    ASSERT_TRUE(device.start(profile, options));
    char name[32];
    EXPECT_EQ(TAV_GetDeviceName(name, sizeof name), TAV_NOERROR);
    EXPECT_STREQ(name, "O'Neill");
    char id[64];
    EXPECT_EQ(TAV_GetUniqueID(id, sizeof id), TAV_NOERROR);
    EXPECT_STREQ(id, "edited");
    device.stop();
    EXPECT_TRUE(std::filesystem::exists(root + "/usr/vire/ks2/templates/KOB.pub"));
    std::filesystem::remove_all(root);
}

// The sanitizers see a queue that is used after its end.
TEST_F(SimulatorTest, AProgramMayEndWhileRepliesAreOnTheirWay) {
    const auto endWithReplyQueued = [] {
        TAV_ServiceCallWithCallback(
            "a://unknown", "{}", [](TAV_ServiceParameters*, void*) {}, nullptr, SDL_TRUE);
        std::exit(0);
    };
    EXPECT_EXIT(endWithReplyQueued(), testing::ExitedWithCode(0), "");
}

TEST_F(SimulatorTest, AFreshRootIsPrivateAndGoesWithTheDevice) {
    const std::string root = device.root();
    struct stat status;
    ASSERT_EQ(stat(root.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    device.stop();
    EXPECT_NE(stat(root.c_str(), &status), 0);
}

TEST_F(SimulatorTest, ARootThatCannotBeMadeIsAnErrorThatNamesIt) {
    sim::Options options;
    options.root = "/proc/self/mem/root";
    std::string error;
    EXPECT_FALSE(device.start({}, options, &error));
    EXPECT_THAT(error, HasSubstr("/proc/self/mem/root"));
    options.root.clear();
    options.journalFile = "/proc/self/mem/journal";
    EXPECT_FALSE(device.start({}, options, &error));
    EXPECT_THAT(error, HasSubstr("/proc/self/mem/journal"));
}

TEST_F(SimulatorTest, TimeIsTheDevicesOwnAndASleepCostsNothing) {
    const Uint32 before = SDL_GetTicks();
    SDL_Delay(3600 * 1000);
    EXPECT_EQ(SDL_GetTicks() - before, 3600U * 1000U);
    EXPECT_EQ(device.now(), 3600L * 1000L);
}

TEST_F(SimulatorTest, OnlyTheApplicationsThreadMovesVirtualTime) {
    std::thread([] { SDL_Delay(1); }).join();
    EXPECT_EQ(device.now(), 0);
}

TEST_F(SimulatorTest, WaitingWithoutAnEventQueueFails) {
    SDL_Event event;
    EXPECT_EQ(SDL_WaitEvent(&event), 0);
}

TEST_F(SimulatorTest, OnlyTheRootProfileIsRoot) {
    EXPECT_NE(getuid(), 0U);
    device.profile.root = true;
    EXPECT_EQ(getuid(), 0U);
}

using EventLoopTest = tavtest::EventTest;

TEST_F(EventLoopTest, WaitingForAnEventLetsTimePassToTheNextDelivery) {
    device.profile.compass.turn = 36.0;
    device.profile.compass.interval = 250;
    TAV_Init(0);
    ASSERT_EQ(TAV_EnableCompass(SDL_TRUE), TAV_NOERROR);
    SDL_Event event;
    ASSERT_EQ(SDL_WaitEvent(&event), 1);
    while (event.type != SDL_USEREVENT) {
        ASSERT_EQ(SDL_WaitEvent(&event), 1);
    }
    EXPECT_EQ(event.user.code, TAV_EVENT_COMPASS);
    EXPECT_EQ(device.now(), 250);
}

// A client of the control socket that never blocks, as the device runs on the same thread.
class ControlTest : public EventLoopTest {
protected:
    void SetUp() override {
        EventLoopTest::SetUp();
        sim::Options options;
        options.virtualTime = true;
        options.control = true;
        sim::Profile profile;
        profile.preferences.emplace();
        ASSERT_TRUE(device.start(profile, options));
        TAV_Init(0);
    }

    int connectClient() {
        const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s/control",
                      device.root().c_str());
        EXPECT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return client;
    }

    std::string receive(int client) {
        std::string all;
        char bytes[4096];
        for (ssize_t count; (count = recv(client, bytes, sizeof bytes, 0)) > 0;) {
            all.append(bytes, static_cast<size_t>(count));
        }
        return all;
    }

    std::string command(const std::string& line) {
        const int client = connectClient();
        EXPECT_EQ(send(client, (line + "\n").data(), line.size() + 1, 0),
                  static_cast<ssize_t>(line.size() + 1));
        device.pump();
        const std::string answer = receive(client);
        close(client);
        return answer;
    }
};

TEST_F(ControlTest, CommandsChangeTheDevice) {
    EXPECT_EQ(command("compass 1 -90.5 0.5"), "ok\n");
    EXPECT_THAT(userEvents(), ElementsAre(TAV_EVENT_COMPASS));
    ASSERT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_NOERROR);
    EXPECT_EQ(command("location 52.52 13.40 34 8 12 90 1.4"), "ok\nreplied to 1\n");
    TAV_Location location;
    EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
    EXPECT_EQ(location.longitude, 13.40);
    EXPECT_EQ(command("location error 5"), "ok\nreplied to 1\n");
    EXPECT_EQ(TAV_GetLocation(&location), TAV_ELOCATIONSERVICE);
    EXPECT_EQ(command("refuse keyboard"), "ok\n");
    EXPECT_EQ(TAV_SetKeyboardState(SDL_TRUE), TAV_ECONNECTION);
    EXPECT_EQ(command("allow keyboard"), "ok\n");
    EXPECT_EQ(TAV_SetKeyboardState(SDL_TRUE), TAV_NOERROR);
    EXPECT_THAT(command("state"), HasSubstr("keyboard: shown\n"));
    EXPECT_EQ(command("refuse a://b"), "ok\n");
    EXPECT_EQ(TAV_ServiceCall("a://b", "{}"), TAV_ECONNECTION);
    EXPECT_EQ(command("set preference deviceName \"New name\""), "ok\n");
    char name[32];
    EXPECT_EQ(TAV_GetDeviceName(name, sizeof name), TAV_NOERROR);
    EXPECT_STREQ(name, "New name");
    EXPECT_EQ(command("set appinfo title My  game"), "ok\n");
    EXPECT_EQ(TAV_GetAppinfoValue("title", name, sizeof name), TAV_NOERROR);
    EXPECT_STREQ(name, "My  game");
    EXPECT_EQ(command("plugin on"), "ok\n");
    EXPECT_NE(TAV_IsPlugin(), SDL_FALSE);
    userEvents();
    EXPECT_EQ(command("quit"), "ok\n");
    SDL_Event event;
    EXPECT_EQ(SDL_PollEvent(&event), 1);
    EXPECT_EQ(event.type, SDL_QUIT);
}

TEST_F(ControlTest, MalformedCommandsAnswerWithAnErrorAndChangeNothing) {
    const std::string before = command("state");
    for (const char* line : {"",
                             "dance",
                             "compass",
                             "compass 1 2",
                             "compass 1.5 2 3",
                             "compass 1 2 3 4",
                             "compass x y z",
                             "location",
                             "location 1 2 3",
                             "location error",
                             "location error x",
                             "location 1 2 3 4 5 6 nan",
                             "location 1 2 3 4 5 6 7",
                             "reply",
                             "reply a://b",
                             "reply a://b {}",
                             "refuse",
                             "refuse doorbell",
                             "refuse keyboard compass",
                             "allow",
                             "set",
                             "set colour red",
                             "set x y z",
                             "set preference k not json",
                             "plugin",
                             "plugin maybe",
                             "state now",
                             "journal --backwards",
                             "quit now",
                             "\x01\xff"}) {
        EXPECT_THAT(command(line), testing::StartsWith("error ")) << line;
    }
    EXPECT_EQ(command("state"), before);
}

TEST_F(ControlTest, ClientsThatMisbehaveAreLetGo) {
    std::vector<int> clients;
    for (int i = 0; i < 40; ++i) {
        clients.push_back(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    }
    const int flooder = connectClient();
    const std::string flood(1 << 16, 'x');
    for (int i = 0; i < 100; ++i) {
        send(flooder, flood.data(), flood.size(), MSG_NOSIGNAL);
        device.pump();
    }
    EXPECT_EQ(receive(flooder), "error the command is too long\n");
    const int gone = connectClient();
    send(gone, "sta", 3, 0);
    device.pump();
    close(gone);
    device.pump();
    EXPECT_THAT(command("state"), testing::StartsWith("ok\n"));
    const int follower = connectClient();
    send(follower, "journal --follow\n", 17, 0);
    device.pump();
    receive(follower);
    TAV_Minimize();
    device.pump();
    EXPECT_THAT(receive(follower), HasSubstr("NApp_Minimize"));
    clients.push_back(flooder);
    clients.push_back(follower);
    for (const int client : clients) {
        close(client);
    }
}

}  // namespace
