// The control socket: its commands, and clients of all kinds.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "device_test.h"
#include "helper/message_socket.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "simulator/control/protocol.h"
#include "simulator/control/socket_address.h"

namespace {

using helper::Message;
using helper::MessageSocket;
using tavsim::ControlMessage;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr uint8_t kind(ControlMessage message) {
    return static_cast<uint8_t>(message);
}

class ControlTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
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
        EXPECT_TRUE(tavsim::ControlAddress(device.root()).connectTo(client));
        return MessageSocket(client);
    }

    MessageSocket clientWith(const std::string& line) {
        MessageSocket client = connectClient();
        client.send(kind(ControlMessage::Command), line);
        device.pump();
        return client;
    }

    // What has come: each message as the letter of its kind and its content.
    static std::string received(MessageSocket& client) {
        std::string all;
        while (const std::optional<Message> message = client.receiveNow()) {
            all += static_cast<char>(message->kind) + message->content;
        }
        return all;
    }

    std::string command(const std::string& line) {
        MessageSocket client = clientWith(line);
        return received(client);
    }

    // For commands that succeed and say no more.
    void carryOut(const std::string& line) { EXPECT_EQ(command(line), "d") << line; }
};

TEST_F(ControlTest, CommandsChangeTheDevice) {
    carryOut("compass 1 -90.5 0.5");
    EXPECT_THAT(userEvents(), ElementsAre(TAV_EVENT_COMPASS));
    ASSERT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_NOERROR);
    carryOut("location 52.52 13.40 34 8 12 90 1.4");
    TAV_Location location;
    EXPECT_EQ(TAV_GetLocation(&location), TAV_NOERROR);
    EXPECT_EQ(location.longitude, 13.40);
    carryOut("location -90 -180 0 0 0 0 0");
    EXPECT_EQ(command("location error 5"), "oreplied to 1\nd");
    EXPECT_EQ(TAV_GetLocation(&location), TAV_ELOCATIONSERVICE);
    carryOut("refuse keyboard");
    EXPECT_EQ(TAV_SetKeyboardState(SDL_TRUE), TAV_ECONNECTION);
    carryOut("allow keyboard");
    EXPECT_EQ(TAV_SetKeyboardState(SDL_TRUE), TAV_NOERROR);
    carryOut("refuse a://b");
    EXPECT_EQ(TAV_ServiceCall("a://b", "{}"), TAV_ECONNECTION);
    carryOut("set preference deviceName \"New name\"");
    char text[32];
    EXPECT_EQ(TAV_GetDeviceName(text, sizeof text), TAV_NOERROR);
    EXPECT_STREQ(text, "New name");
    carryOut("set appinfo title My  game");
    EXPECT_EQ(TAV_GetAppinfoValue("title", text, sizeof text), TAV_NOERROR);
    EXPECT_STREQ(text, "My  game");
    carryOut("plugin on");
    EXPECT_NE(TAV_IsPlugin(), SDL_FALSE);
    NApp_GetKSCaller()->ksCall("vire://com.vire.applicationManager/launch", R"({"id":"a\nb"})",
                               true);
    EXPECT_THAT(command("state"), HasSubstr("launched: a\\u000ab\n"));
}

TEST_F(ControlTest, RefusalsLastAsLongAsTheyAreAskedTo) {
    const auto accepts = [] { return TAV_SetKeyboardState(SDL_TRUE) == TAV_NOERROR; };
    carryOut("refuse keyboard for 1.5s");
    EXPECT_FALSE(accepts());
    device.advance(1499);
    EXPECT_FALSE(accepts());
    EXPECT_THAT(command("state"), HasSubstr("refused: keyboard\n"));
    device.advance(1);
    EXPECT_TRUE(accepts());
    EXPECT_THAT(command("state"), Not(HasSubstr("refused: ")));
    carryOut("refuse keyboard request 2");
    carryOut("refuse keyboard for 1s request 3");
    carryOut("refuse keyboard for 1s request 4");
    for (const bool expected : {true, false, false}) {
        EXPECT_EQ(accepts(), expected);
    }
    device.advance(1000);
    EXPECT_TRUE(accepts());
    carryOut("refuse keyboard request 1");
    carryOut("allow keyboard");
    EXPECT_TRUE(accepts());
}

TEST_F(ControlTest, AServiceAnswersOtherwiseUntilThatIsTakenBack) {
    tavsim::Service ticks;
    ticks.replies = {"1", "2"};
    ticks.delay = ticks.every = 10;
    ticks.repeat = true;
    device.profile.services["a://ticks"] = ticks;
    HKSCaller& bus = *NApp_GetKSCaller();
    std::string received;
    const auto receive = [](int token, const char* text, void* all) {
        *static_cast<std::string*>(all) += std::to_string(token) + ":" + text + " ";
    };
    const auto receivedIn = [&](int milliseconds) {
        device.advance(milliseconds);
        return std::exchange(received, {});
    };
    const int first = bus.ksCallWithSubscription("a://ticks", "{}", false, receive, &received);
    const auto replied = [](int token, const std::string& text) {
        return std::to_string(token) + ":" + text + " ";
    };
    EXPECT_EQ(receivedIn(15), replied(first, "1"));
    carryOut("answer a://ticks {\"percent\": 5}");
    EXPECT_EQ(receivedIn(0), replied(first, "{\"percent\": 5}"));
    const int call = bus.ksCallWithResponse("a://ticks", "{}", false, receive, &received);
    EXPECT_EQ(receivedIn(9), "");
    EXPECT_EQ(receivedIn(100), replied(call, "{\"percent\": 5}"));
    // What is on its way does not arrive any more, and the call stays open.
    const int silenced = bus.ksCallWithResponse("a://ticks", "{}", false, receive, &received);
    carryOut("silence a://ticks");
    EXPECT_EQ(receivedIn(100), "");
    EXPECT_THAT(device.openCalls(), ElementsAre(first, silenced));
    EXPECT_EQ(command("reply a://ticks late"), "oreplied to 2\nd");
    EXPECT_EQ(receivedIn(100), replied(first, "late") + replied(silenced, "late"));
    carryOut("allow a://ticks");
    const int last = bus.ksCallWithSubscription("a://ticks", "{}", false, receive, &received);
    EXPECT_EQ(receivedIn(20), replied(last, "1") + replied(last, "2"));
}

TEST_F(ControlTest, MalformedCommandsAnswerWithAnErrorAndChangeNothing) {
    ASSERT_EQ(TAV_EnableLocationTracking(SDL_TRUE), TAV_NOERROR);
    const std::string before = command("state");
    const struct {
        const char* line;
        const char* reason;
    } rows[] = {
        {"", "no command \"\"; there are "},
        {"dance", "no command \"dance\"; there are list, wait, compass, "},
        {"locaton error 5", "no command \"locaton\"; did you mean \"location\"?"},
        {"\x01\xff", "no command \"\\u0001\xef\xbf\xbd\"; there are "},
        {"state\nquit", "a command is one line"},
        {"list", "list is a command of `tavsim ctl` alone"},
        {"compass", "usage: compass INT DOUBLE DOUBLE"},
        {"compass 1.5 2 3", "usage: "},
        {"compass 1 2 3 4", "usage: "},
        {"compass x y z", "usage: "},
        {"compass 2147483648 2 3", "usage: "},
        {"compass 1 inf 3", "usage: "},
        {"location", "usage: location LATITUDE "},
        {"location 1 2 3", "usage: location LATITUDE "},
        {"location 1 2 3 4 5 6 nan", "usage: location LATITUDE "},
        {"location 1 2 3 4 5 6 1e999", "usage: location LATITUDE "},
        {"location 90.1 2 3 4 5 6 7", "location: the latitude is from -90 to 90"},
        {"location 1 -180.1 3 4 5 6 7", "location: the longitude is from -180 to 180"},
        {"location error", "usage: location error CODE"},
        {"location error 9223372036854775808", "usage: location error CODE"},
        {"reply a://b", "usage: reply URI TEXT"},
        {"reply a://b {}", "no open call or subscription of a://b"},
        {"refuse", "usage: refuse NAME|URI"},
        {"refuse keyboard compass", "usage: refuse NAME|URI"},
        {"refuse doorbell", "\"doorbell\" is no URI and no request that can be refused"},
        {"refuse keyboard for", "usage: refuse NAME|URI"},
        {"refuse keyboard for 1 request 2", "usage: refuse NAME|URI"},
        {"refuse keyboard request 0", "usage: refuse NAME|URI"},
        {"refuse keyboard request 1 for 1s", "usage: refuse NAME|URI"},
        {"answer a://b", "usage: answer URI TEXT"},
        {"silence", "usage: silence URI"},
        {"answer battery 5", "\"battery\" is no URI"},
        {"silence a://b now", "usage: silence URI"},
        {"allow", "usage: allow NAME|URI"},
        {"set", "usage: set property KEY VALUE, or set appinfo KEY VALUE, or set preference KEY"},
        {"set colour red", "usage: set property "},
        {"set property", "usage: set property KEY VALUE"},
        {"set preference k not json", "set preference: the value must be JSON"},
        {"plugin maybe", "usage: plugin on|off"},
        {"state now", "usage: state [--json]"},
        {"journal --backwards", "usage: journal [--follow]"},
        {"quit now", "usage: quit"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(command(row.line), StartsWith(std::string("r") + row.reason)) << row.line;
    }
    EXPECT_EQ(command("state"), before);
}

TEST_F(ControlTest, ClientsThatMisbehaveAreLetGo) {
    const std::string garbage[] = {
        "state\n",                                           // text
        std::string("x\5\0\0\0\0\0\0\0state", 14),           // another kind of message
        std::string("c\xff\xff\xff\xff\xff\xff\xff\x7f", 9)  // a length that nothing has
    };
    for (const std::string& bytes : garbage) {
        MessageSocket client = connectClient();
        ::send(client.socket(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        device.pump();
        shutdown(client.socket(), SHUT_WR);
        device.pump();
        EXPECT_THAT(received(client), testing::AnyOf("", StartsWith("r"))) << bytes;
        EXPECT_TRUE(client.isGone()) << bytes;
    }
    MessageSocket flooder = connectClient();
    flooder.queue(kind(ControlMessage::Command), std::string(8 << 20, 'x'));
    for (int i = 0; i < 100 && flooder.sendNow() > 0; ++i) {
        device.pump();
    }
    EXPECT_TRUE(flooder.isGone());
    EXPECT_THAT(command("state"), StartsWith("o"));
}

// The application never waits for a client, and yet the client misses nothing.
// What a follower has been told.
struct Followed {
    std::string lines;
    int64_t lost = 0;
    int64_t told = 0;  // lines, the lost ones among them
    bool ended = false;

    void take(const Message& message) {
        if (message.kind == kind(ControlMessage::Output)) {
            lines += message.content;
            told += std::count(message.content.begin(), message.content.end(), '\n');
        } else if (message.kind == kind(ControlMessage::Lost)) {
            lost += std::stoll(message.content);
            told += std::stoll(message.content);
        }
        ended = message.kind == kind(ControlMessage::Ended);
    }
};

TEST_F(ControlTest, AFollowerThatReadsLateHasTheWholeJournalAndItsEnd) {
    constexpr int kRequests = 30000;  // more than the journal keeps
    MessageSocket follower = clientWith("journal --follow");
    for (int i = 0; i < kRequests; ++i) {
        NApp_SetTouchAggression(i);
        if (i % 1000 == 0) {
            device.pump();
        }
    }
    Followed followed;
    std::thread reader([&] {
        while (const std::optional<Message> message = follower.receive()) {
            followed.take(*message);
        }
    });
    device.stop();
    reader.join();
    EXPECT_TRUE(followed.ended);
    EXPECT_EQ(followed.lost, 0);
    size_t at = 0;
    for (int i = 0; i < kRequests; ++i) {
        at = followed.lines.find("\"aggression\":" + std::to_string(i) + ",", at);
        ASSERT_NE(at, std::string::npos) << i;
    }
}

TEST_F(ControlTest, AFollowerThatDoesNotReadIsToldWhatItLost) {
    const std::string large(4 << 20, 'x');
    const auto before = static_cast<int64_t>(device.journal().size());
    constexpr int kLarge = 20;
    constexpr int kSmall = 10005;
    MessageSocket follower = clientWith("journal --follow");
    for (int i = 0; i < kLarge; ++i) {
        NApp_GetAppinfoValue(large.c_str(), nullptr, 0);
        device.pump();
    }
    for (int i = 0; i < kSmall; ++i) {
        NApp_GetAppinfoValue("small", nullptr, 0);
    }
    Followed followed;
    for (int i = 0; i < 100000 && followed.told < before + kLarge + kSmall; ++i) {
        device.pump();
        while (const std::optional<Message> message = follower.receiveNow()) {
            followed.take(*message);
        }
    }
    EXPECT_EQ(followed.told, before + kLarge + kSmall);
    EXPECT_GT(followed.lost, 0);
    EXPECT_LT(followed.lost, kLarge);
}

// What a program has written into the file.
std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ControlTest, JournalAndSocketAreLeftAloneByWhatTheProgramDoesToDescriptors) {
    constexpr int kMostUsed = 700;
    SDL_Quit();  // whose own descriptors are not to be closed under it
    tavsim::Options options;
    options.root = testing::TempDir() + "/descriptors-" + std::to_string(getpid());
    options.control = true;
    options.journalFile = options.root + "/journal";
    ASSERT_TRUE(device.start({}, options));
    const std::string save = options.root + "/save";
    const MessageSocket clientBefore = clientWith("journal --follow");

    // The program closes all descriptors and uses them for a file of its own.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    const int saved = open(save.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    for (int number = saved + 1; number < kMostUsed; ++number) {
        dup2(saved, number);
    }
    NApp_SetTouchAggression(12);
    device.pump();
    EXPECT_THAT(contentOf(options.journalFile), HasSubstr("\"aggression\":12,"));

    // A fork of it takes no part.
    MessageSocket client = connectClient();
    client.send(kind(ControlMessage::Command), "plugin on");
    const pid_t fork = ::fork();
    if (fork == 0) {
        NApp_SetTouchAggression(34);
        device.pump();
        _exit(0);
    }
    waitpid(fork, nullptr, 0);
    EXPECT_THAT(contentOf(options.journalFile), Not(HasSubstr("\"aggression\":34,")));
    device.pump();
    EXPECT_EQ(received(client), "d");
    EXPECT_TRUE(device.profile.plugin);

    device.stop();
    EXPECT_EQ(contentOf(save), "");
    for (int number = saved; number < kMostUsed; ++number) {
        EXPECT_NE(fcntl(number, F_GETFD), -1) << "a descriptor of the program was closed";
    }
    close_range(STDERR_FILENO + 1, ~0U, 0);
    std::filesystem::remove_all(options.root);
}

}  // namespace
