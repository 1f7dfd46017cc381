// The control socket: its commands, and clients of all kinds.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "base/message_socket.h"
#include "base/socket_address.h"
#include "simulator/device/trusted_folder.h"
#include "transcript.h"

namespace {

using base::Message;
using base::MessageSocket;
using testing::HasSubstr;
using testing::StartsWith;

class ControlTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        tavsim::Options options;
        options.virtualTime = true;
        options.control = true;
        tavsim::Profile profile;
        profile.preferences.emplace();
        ASSERT_TRUE(device.start(profile, options));
        TAV_Init(0);
    }

    MessageSocket connectClient() {
        const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_TRUE(base::SocketAddress(device.root() + tavsim::kControlSocket).connectTo(client));
        return MessageSocket(client);
    }

    // The messages received so far, each as the letter of its kind followed by its content.
    static std::string received(MessageSocket& client) {
        std::string all;
        while (const std::optional<Message> message = client.receiveNow()) {
            all += static_cast<char>(message->kind) + message->content;
        }
        return all;
    }

    std::string ask(MessageSocket& client, const std::string& line) {
        client.send('c', line);
        device.pump();
        return received(client);
    }

    std::string command(const std::string& line) {
        MessageSocket client = connectClient();
        return ask(client, line);
    }

    MessageSocket follow() {
        MessageSocket client = connectClient();
        ask(client, "journal --follow");
        return client;
    }

    void give(const std::vector<std::string>& lines) {
        MessageSocket client = connectClient();
        for (const std::string& line : lines) {
            show(line, [&] { return ask(client, line); });
        }
    }
};

TEST(MessageSocketTest, SendsWhatTheOtherEndTakesInItsTime) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    MessageSocket sender(ends[0]);
    MessageSocket receiver(ends[1]);
    const std::string content(8 << 20, 'x');
    EXPECT_FALSE(sender.send('a', content, std::chrono::milliseconds(1)));
    std::optional<Message> message;
    for (; !message && !sender.isGone(); message = receiver.receiveNow()) {
        sender.sendNow();
    }
    ASSERT_TRUE(message);
    EXPECT_EQ(message->content, content);
    EXPECT_TRUE(sender.send('a', "", std::chrono::milliseconds(1)));
}

TEST_F(ControlTest, CommandsChangeTheDevice) {
    TAV_Location location;
    char text[32];
    give({"compass 1 -90.5 0.5"});
    CALL(userEvents().size());
    ASSERT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_NOERROR);
    give({"location 52.52 13.40 34 8 12 90 1.4"});
    CALL(TAV_GetLocation(&location));
    CALL(location.longitude);
    give({"location -90 -180 0 0 0 0 0", "location error 5"});
    CALL(TAV_GetLocation(&location));
    give({"refuse keyboard"});
    CALL(TAV_SetKeyboardState(SDL_TRUE));
    give({"allow keyboard", "refuse a://b", "state"});
    CALL(TAV_SetKeyboardState(SDL_TRUE));
    CALL(TAV_ServiceCall("a://b", "{}"));
    give({"set preference deviceName \"New name\"", "set appinfo title My  game", "plugin on"});
    CALL(filled(TAV_GetDeviceName, 32));
    CALL(TAV_GetAppinfoValue("title", text, sizeof text));
    CALL(std::string(text));
    CALL(TAV_IsPlugin());
    CALL(bus.ksCall("vire://com.vire.applicationManager/launch", R"({"id":"a\nb"})", true) > 0);
    give({"state"});
}

TEST_F(ControlTest, TheStateAsJsonHasWhatCommandsHaveSet) {
    const std::pair<const char*, const char*> rows[] = {
        {"plugin on", R"("device":"","program":"*","machine":null,"plugin":true)"},
        {"location 1 2 3 4 5 6 7.5", R"("position":{"latitude":1,*,"velocity":7.5},"lost":null)"},
        {"location lost 4", R"("lost":4)"},
        {"walk 1 0,0 0,1",
         R"("time":{"now":0,"pace":"virtual"*},"queue":[{"at":1000,"what":"fix"}])"},
        {"compass follow on", R"("compass":{"on":false,"heading":null,"follows":true)"},
        {"compass 1 90.5 1", R"("heading":90.5)"},
        {"compass hold 7", R"("follows":true,"held":true})"},
        {"compass hold off", R"("held":false})"},
        {"compass hold 361", R"("held":false})"},
        {"answer a://b \"x\"",
         R"({"uri":"a://b","answer":"\"x\"","silent":false,"delay":0,"changed":true})"},
        {"delay a://b 3s", R"("answer":"\"x\"","silent":false,"delay":3000,"changed":true})"},
        {"allow a://b", R"("services":[{"uri":"kora://*)"},
        {"silence a://b",
         R"({"uri":"a://b","answer":null,"silent":true,"delay":0,"changed":true})"},
        {"allow a://b", R"({"uri":"vire://*/vibrate","answer":null,"silent":false,*false}])"},
        {"set preference region {\"a\" : 1}", R"("preferences":{"region":{"a":1}})"},
        {"set appinfo a b", R"("appinfo":{"a":"b"},"screen":null,"page":null)"},
        {"refuse keyboard", R"("refused":["keyboard"],*"state":{"location":"lost")"},
    };
    for (const auto& [line, expected] : rows) {
        command(line);
        const std::string state = command("state --json");
        EXPECT_TRUE(tavsim::matchesGlob(state, "o{*" + std::string(expected) + "*}\nd"))
            << line << '\n'
            << state;
    }
}

TEST_F(ControlTest, WhoWatchesIsShownWhatHasBeenAndThenWhatComes) {
    const std::string file = testing::TempDir() + "/watched-" + std::to_string(getpid());
    std::ofstream(file) << "at 0ms: plugin on\nexpect within 1min what=touch\nat 2min: quit\n";
    tavsim::Options options;
    options.control = true;
    options.scenarioFile = file;
    options.recordFile = file + "-recording";
    ASSERT_TRUE(device.start({}, options));
    MessageSocket watcher = connectClient();
    std::string shown = ask(watcher, "watch");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (shown.find("\"plugin\":true") == std::string::npos &&
           std::chrono::steady_clock::now() < end) {
        device.advance(10);
        shown += received(watcher);
    }
    NApp_SetTouchAggression(1);
    device.stop();
    shown += received(watcher);
    std::string expected = "o";
    for (const char* line :
         {R"({"step":{"line":1,"text":"at 0ms: plugin on","state":"waiting"}})",
          R"({"state":{"device":"","program":*"plugin":false,*"state":{}}})", R"(fo*"done"}})",
          R"({"recorded":"at 0ms: plugin on"})",
          R"({"step":{"line":2,"text":"expect within 1min what=touch","state":"waiting"}})",
          R"(*{"state":{"plugin":true,"time":{"now":*}})",
          R"(*{"journal":{"at":*,"what":"touch",*}})",
          R"(*{"step":{"line":3,*"state":"failed","reason":"the application ended at * ms *"}})",
          R"({"recorded":"expect ended within *ms"})"}) {
        expected += std::string(line) + "\n";
    }
    EXPECT_TRUE(tavsim::matchesGlob(shown, expected + "*e")) << shown;
    std::filesystem::remove(file);
    std::filesystem::remove(options.recordFile);
}

TEST_F(ControlTest, APausedApplicationIsHeldUntilItMayGoOn) {
    device.profile.compass.turn = 36;
    TAV_EnableCompass(SDL_TRUE);
    MessageSocket client = connectClient();
    const auto send = [&client](const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            client.send('c', line);
        }
    };
    send({"pause", "state --json", "step", "state --json", "step delivery", "state --json"});
    send({"resume", "state --json"});
    device.advance(1000);
    const std::string answers = received(client);
    std::string expected = "d";
    for (const char* state :
         {R"("now":0,*"paused":true*"heading":null)", R"("now":100,*"paused":true*"heading":null)",
          R"("now":200,*"paused":true*"heading":3.6,)",
          R"("now":300,*"paused":false*"heading":7.2,)"}) {
        expected += "o{*" + std::string(state) + "*}\nd*";
    }
    EXPECT_TRUE(tavsim::matchesGlob(answers, expected)) << answers;

    // A fork is not held, because nobody could let it go on.
    send({"pause", "step"});
    device.pump();
    const pid_t fork = ::fork();
    if (fork == 0) {
        alarm(60);
        device.advance(1000);
        _exit(0);
    }
    int status = -1;
    waitpid(fork, &status, 0);
    EXPECT_EQ(status, 0);

    // Nor is an application that is asked to quit.
    send({"quit"});
    device.advance(1000);
    EXPECT_EQ(received(client), "ddd");
    SDL_Event event{};
    while (event.type != SDL_QUIT && SDL_PollEvent(&event) != 0) {}
    EXPECT_EQ(event.type, SDL_QUIT);

    EXPECT_THAT(command("speed 2"), StartsWith("rspeed: only"));
    EXPECT_THAT(command("speed 0.5"), StartsWith("rspeed: time is from 1"));
    tavsim::Options realTime;
    realTime.control = true;
    ASSERT_TRUE(device.start({}, realTime));
    EXPECT_THAT(command("pause"), StartsWith("rpause: the device has real time"));
}

TEST_F(ControlTest, RefusalsLastAsLongAsTheyAreAskedTo) {
    const auto ask = [this] { CALL(TAV_SetKeyboardState(SDL_TRUE)); };
    give({"refuse keyboard for 1.5s"});
    ask();
    device.advance(1499);
    ask();
    give({"state"});
    device.advance(1);
    ask();
    give({"state", "refuse keyboard request 2", "refuse keyboard for 1s request 3",
          "refuse keyboard for 1s request 4"});
    for (int request = 0; request < 3; ++request) {
        ask();
    }
    device.advance(1000);
    ask();
    give({"refuse keyboard request 1", "allow keyboard"});
    ask();
}

TEST_F(ControlTest, AServiceAnswersOtherwiseUntilThatIsTakenBack) {
    device.profile.services["a://ticks"] = tavtest::repliesOf({"1", "2"}, 10, 10);
    subscribe("a://ticks");
    pass(15);
    give({"answer a://ticks {\"percent\": 5}"});
    pass(0);
    call("a://ticks");
    pass(100);
    give({"delay a://ticks 60ms"});
    call("a://ticks");
    pass(100);
    // A reply that is already on its way is dropped, and the call stays open.
    call("a://ticks");
    give({"silence a://ticks"});
    pass(100);
    CALL(device.openCalls().size());
    give({"reply a://ticks late"});
    pass(100);
    give({"allow a://ticks"});
    subscribe("a://ticks");
    pass(20);
    constexpr char kBattery[] = "vire://com.vire.battery/status";
    give({"battery 9"});
    device.profile.services[kBattery].replies = {R"({"percent": 72, "charging": false})"};
    subscribe(kBattery);
    give({"battery 9", "state"});
}

TEST_F(ControlTest, AFrameIsWhatHasChangedSinceTheConnectionWasLastAnswered) {
    using namespace std::string_literals;
    const auto open = [](int width, int height, int bits) {
        SDL_FillRect(SDL_SetVideoMode(width, height, bits, SDL_SWSURFACE), nullptr, 0);
    };
    const auto fill = [](SDL_Rect rect, Uint32 color) {
        SDL_FillRect(SDL_GetVideoSurface(), &rect, color);
    };
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { open(4, 3, 32); },
         "4,\"height\":3,\"parts\":[[0,0,4,3]]}\n"s + std::string(36, '\0')},
        {[&] {
             fill({1, 0, 2, 1}, 0x010203);
             fill({3, 2, 1, 1}, 0x040506);
         },
         "4,\"height\":3,\"parts\":[[1,0,2,1],[3,2,1,1]]}\n\1\2\3\1\2\3\4\5\6"},
        {[&] {
             fill({0, 0, 1, 1}, 0x070809);
             fill({1, 1, 1, 1}, 0x070809);
         },
         "4,\"height\":3,\"parts\":[[0,0,2,2]]}\n\7\b\t\1\2\3\0\0\0\7\b\t"s},
        {[&] { open(1, 1, 16); }, "1,\"height\":1,\"parts\":[[0,0,1,1]]}\n\0\0\0"s},
    };
    MessageSocket client = connectClient();
    const auto frameAnswered = [&] {
        std::string answer;
        while ((answer = received(client)).empty()) {
            device.pump();
        }
        return answer;
    };
    std::string last;
    for (const auto& [change, frame] : cases) {
        change();
        client.send('c', "frame");
        last = "p{\"width\":" + frame + "d";
        EXPECT_EQ(frameAnswered(), last);
    }
    EXPECT_EQ(command("frame"), last) << "the first of a connection is everything";
    EXPECT_EQ(ask(client, "frame"), "") << "nothing has changed yet";
    fill({0, 0, 1, 1}, 0xffff);
    EXPECT_EQ(frameAnswered(),
              "p{\"width\":1,\"height\":1,\"parts\":[[0,0,1,1]]}\n\xff\xff\xff"
              "d");
    EXPECT_THAT(command("state --json"), HasSubstr(R"("screen":{"width":1,"height":1})"));
}

TEST_F(ControlTest, WhatASocketDoesNotTakeAtOnceIsSentWhileTheApplicationWaits) {
    tavsim::Options options;
    options.control = true;
    ASSERT_TRUE(device.start({}, options));
    SDL_SetVideoMode(2000, 2000, 32, SDL_SWSURFACE);
    MessageSocket client = connectClient();
    client.send('c', "frame");
    device.pump();
    std::atomic<bool> isReceived = false;
    std::thread reader([&] {
        for (auto message = client.receive(); message->kind != 'd'; message = client.receive()) {}
        isReceived = true;
    });
    while (!isReceived) {
        SDL_Delay(1);
    }
    reader.join();
}

TEST_F(ControlTest, MalformedCommandsAnswerWithAnErrorAndChangeNothing) {
    ASSERT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_NOERROR);
    const std::string before = command("state");
    give({"", "\x01\xff", "state\nquit"});
    give(seedLines("commands", "malformed"));
    EXPECT_EQ(command("state"), before);
}

TEST_F(ControlTest, ClientsThatMisbehaveAreLetGo) {
    using namespace std::string_literals;
    // Plain text, a message of an unknown kind, and an impossible length.
    for (const std::string& bytes :
         {"state\n"s, "x\5\0\0\0\0\0\0\0state"s, "c\xff\xff\xff\xff\xff\xff\xff\x7f"s}) {
        MessageSocket client = connectClient();
        ::send(client.socket(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        device.pump();
        shutdown(client.socket(), SHUT_WR);
        device.pump();
        EXPECT_THAT(received(client), testing::AnyOf("", StartsWith("r"))) << bytes;
        EXPECT_TRUE(client.isGone()) << bytes;
    }
    MessageSocket flooder = connectClient();
    flooder.queue('c', std::string(8 << 20, 'x'));
    for (int i = 0; i < 100 && flooder.sendNow() > 0; ++i) {
        device.pump();
    }
    EXPECT_TRUE(flooder.isGone());
    EXPECT_THAT(command("state"), StartsWith("o"));
    MessageSocket follower = follow();
    std::vector<MessageSocket> idle;
    for (int i = 0; i < 100; ++i) {
        idle.push_back(connectClient());
        i % 10 == 0 ? device.pump() : void();
    }
    EXPECT_THAT(command("state"), StartsWith("o"));
    EXPECT_FALSE((received(follower), follower.isGone()));
}

TEST_F(ControlTest, ACommandCanEndTheDevice) {
    tavsim::Options options;
    options.virtualTime = options.control = true;
    options.pageFile = testing::TempDir() + "/empty-" + std::to_string(getpid()) + ".js";
    std::ofstream(options.pageFile).close();
    tavsim::Profile profile;
    profile.plugin = true;
    ASSERT_TRUE(device.start(profile, options));
    TAV_RegisterJSHandler("stop", [](TAV_JSParameters*) { tavsim::device().stop(); });
    ASSERT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
    MessageSocket follower = follow();
    EXPECT_THAT(command("page call stop"), StartsWith("e"));
    EXPECT_THAT(received(follower), testing::EndsWith("e"));
    std::filesystem::remove(options.pageFile);
}

TEST_F(ControlTest, AFollowerThatReadsLateHasTheWholeJournalAndItsEnd) {
    constexpr int kRequests = 30000;  // more than the journal keeps
    MessageSocket follower = follow();
    for (int i = 0; i < kRequests; ++i) {
        NApp_SetTouchAggression(i);
        i % 1000 == 0 ? device.pump() : void();
    }
    std::string lines;
    char lastKind = 0;
    std::thread reader([&] {
        while (const std::optional<Message> message = follower.receive()) {
            lines += message->content;
            lastKind = static_cast<char>(message->kind);
        }
    });
    device.stop();
    reader.join();
    EXPECT_EQ(lastKind, 'e');
    size_t at = 0;
    for (int i = 0; i < kRequests; ++i) {
        at = lines.find("\"aggression\":" + std::to_string(i) + ",", at);
        ASSERT_NE(at, std::string::npos) << i;
    }
}

TEST_F(ControlTest, AFollowerThatDoesNotReadIsToldWhatItLost) {
    const std::string large(4 << 20, 'x');
    constexpr int kLarge = 20;
    constexpr int kSmall = 10005;
    MessageSocket follower = follow();
    for (int i = 0; i < kLarge; ++i) {
        NApp_GetAppinfoValue(large.c_str(), nullptr, 0);
        device.pump();
    }
    for (int i = 0; i < kSmall; ++i) {
        NApp_GetAppinfoValue("small", nullptr, 0);
    }
    int64_t lost = 0, read = 0;
    for (int i = 0; i < 100000 && lost + read < kLarge + kSmall; ++i) {
        device.pump();
        while (const std::optional<Message> message = follower.receiveNow()) {
            const bool isLoss = message->kind == 'l';
            lost += isLoss ? std::stoll(message->content) : 0;
            read += isLoss ? 0 : std::ranges::count(message->content, '\n');
        }
    }
    EXPECT_EQ(lost + read, kLarge + kSmall);
    EXPECT_GT(lost, 0);
    EXPECT_LT(lost, kLarge);
}

TEST_F(ControlTest, JournalAndSocketAreLeftAloneByWhatTheProgramDoesToDescriptors) {
    constexpr int kMostUsed = 700;
    SDL_Quit();  // its descriptors must not be closed while it uses them
    tavsim::Options options;
    options.root = testing::TempDir() + "/descriptors-" + std::to_string(getpid());
    options.control = true;
    options.journalFile = options.root + "/journal";
    ASSERT_TRUE(device.start({}, options));
    const MessageSocket clientBefore = follow();

    // The program closes all descriptors and reuses their numbers for a file of its own.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    const int saved =
        open(path("/save").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    for (int number = saved + 1; number < kMostUsed; ++number) {
        dup2(saved, number);
    }
    NApp_SetTouchAggression(12);
    device.pump();
    EXPECT_THAT(read("/journal"), HasSubstr("\"aggression\":12,"));

    // A child process writes nothing to the journal and does not answer clients.
    MessageSocket client = connectClient();
    client.send('c', "plugin on");
    const pid_t fork = ::fork();
    if (fork == 0) {
        NApp_SetTouchAggression(34);
        device.pump();
        _exit(0);
    }
    waitpid(fork, nullptr, 0);
    EXPECT_THAT(read("/journal"), testing::Not(HasSubstr("\"aggression\":34,")));
    device.pump();
    EXPECT_EQ(received(client), "d");
    EXPECT_TRUE(device.profile.plugin);

    EXPECT_EQ(read("/save"), "");
    device.stop();
    for (int number = saved; number < kMostUsed; ++number) {
        EXPECT_NE(fcntl(number, F_GETFD), -1) << "a descriptor of the program was closed";
    }
    close_range(STDERR_FILENO + 1, ~0U, 0);
    std::filesystem::remove_all(options.root);
}

}  // namespace
