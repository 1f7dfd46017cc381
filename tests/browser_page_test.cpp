// The page in the user's browser: what its server asks, and how the application's device answers.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "base/message_socket.h"
#include "base/socket_address.h"
#include "bridge/message.h"
#include "helper/items.h"
#include "js/handlers.h"
#include "simulator/device/trusted_folder.h"
#include "transcript.h"

namespace {

using bridge::MessageKind;
using testing::ElementsAre;

// The server of the page.
std::optional<base::MessageSocket> g_server;
int g_depth = 0;
int g_deepest = 0;

using Items = std::vector<std::variant<bool, int, const char*>>;

std::string items(const Items& values) {
    helper::ItemWriter writer;
    for (const auto& value : values) {
        if (const bool* flag = std::get_if<bool>(&value)) {
            writer.writeBool(*flag);
            continue;
        }
        const int* number = std::get_if<int>(&value);
        const char* text = number == nullptr ? std::get<const char*>(value) : nullptr;
        number != nullptr ? writer.writeInt(*number)
                          : writer.writeText(text != nullptr ? helper::Text(text) : std::nullopt);
    }
    return writer.message();
}

void ask(MessageKind kind, const Items& values) {
    g_server->queue(static_cast<uint8_t>(kind), items(values));
    g_server->sendNow();
}

// The messages that have come, each in short.
std::vector<std::string> taken() {
    std::vector<std::string> all;
    while (const auto message = g_server->receiveNow()) {
        helper::ItemReader reader(message->content);
        std::string line;
        if (message->kind == static_cast<uint8_t>(MessageKind::Answer)) {
            line = std::to_string(reader.readInt());
            const bool isCall = !reader.rest().empty() && reader.rest().front() == 'b';
            if (isCall) {
                line += reader.readBool() ? "!" : ":";
                line += reader.readString();
            }
        } else {
            line = reader.readString();
            for (int left = reader.readInt(); left > 0; --left) {
                line += "," + std::string(reader.readText().value_or("null"));
            }
        }
        all.push_back(line.substr(0, 60));
    }
    return all;
}

void note(const char* text) {
    const char* arguments[] = {text, nullptr};
    EXPECT_EQ(TAV_CallJS("note", arguments, 2), TAV_NOERROR);
}

const std::pair<const char*, TAV_JSHandler> kMethods[] = {
    {"echo", [](TAV_JSParameters* call) { TAV_JSReply(call, TAV_GetJSParamString(call, 0)); }},
    {"refuse", [](TAV_JSParameters* call) { TAV_JSException(call, "no \xe2\x9c\x97"); }},
    {"pump",
     [](TAV_JSParameters* call) {
         note("in pump");
         g_deepest = std::max(g_deepest, ++g_depth);
         SDL_PollEvent(nullptr);
         --g_depth;
         TAV_JSReply(call, "pumped");
     }},
    {"vanish", [](TAV_JSParameters*) { g_server.reset(); }},
    {"forget", [](TAV_JSParameters*) { TAV_JSQuit(); }},
    {"quit", [](TAV_JSParameters*) { TAV_Quit(); }},
    {"stop", [](TAV_JSParameters*) { tavsim::device().stop(); }},
    {"long", [](TAV_JSParameters* call) { TAV_JSReply(call, std::string(33 << 20, 'x').c_str()); }},
};

class BrowserPageTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        open();
    }

    void TearDown() override {
        EventTest::TearDown();
        g_server.reset();
    }

    void start(bool isVirtual = false) {
        tavsim::Profile profile;
        profile.plugin = true;
        tavsim::Options options;
        options.virtualTime = isVirtual;
        options.pageFile = "/anywhere/index.html";
        options.recordFile = m_recordFile;
        m_error.clear();
        device.start(profile, options, &m_error);
        for (const auto& [name, method] : kMethods) {
            TAV_RegisterJSHandler(name, method);
        }
    }

    // Starts the application as the plug-in of a document.
    void open() {
        start();
        base::Descriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const base::SocketAddress address(device.root() + tavsim::kPageSocket);
        ASSERT_TRUE(address.bindTo(listener.number()));
        ASSERT_EQ(listen(listener.number(), 1), 0);
        ASSERT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
        g_server.emplace(accept4(listener.number(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    // What is printed while the device handles what the server has sent.
    std::string pump(const std::function<void()>& before = [] {}) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        device.acceptStreams();
        before();
        device.pump();
        return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    }

    std::string m_error;
    std::string m_recordFile;
};

TEST_F(BrowserPageTest, AnswersInTheOrderOfTheQuestions) {
    ask(MessageKind::MethodList, {1});
    ask(MessageKind::MethodCall, {-7, "echo", 1, "\xf0\x9f\x98\x80"});
    ask(MessageKind::MethodCall, {3, "echo", 1, nullptr});
    ask(MessageKind::MethodCall, {4, "refuse", 0});
    ask(MessageKind::MethodCall, {5, "nothing", 0});
    ask(MessageKind::MethodCall, {6, "echo", 99});
    ask(MessageKind::MethodCall, {7});
    ask(MessageKind::MethodCall, {8, "long", 0});
    ask(MessageKind::ConsoleLine, {"warn", "careful"});
    ask(MessageKind::Problem, {"index.html:3: Error"});
    EXPECT_EQ(pump(), "[page] careful\nindex.html:3: Error\n");
    EXPECT_THAT(taken(), ElementsAre("1", "-7:\xf0\x9f\x98\x80", "3:", "4!no \xe2\x9c\x97",
                                     "5!Unknown Function", "6:", "7",
                                     "8!The application's reply is longer than 32 MiB"));
    EXPECT_EQ(tavsim::carryOut("page call echo \"a b\"").output, "a b\n");
    note("x");
    EXPECT_THAT(taken(), ElementsAre("note,x,null"));
    EXPECT_THAT(
        device.journal(),
        testing::Contains(testing::HasSubstr(
            R"("kind":"page","what":"call","method":"echo","arguments":[null],"outcome":"")")));
    EXPECT_THAT(device.journal(), testing::Contains(testing::HasSubstr(
                                      R"("what":"console","level":"warn","text":"careful")")));
}

TEST_F(BrowserPageTest, ServesQuestionsWhileAMethodHandlesEventsUpToALimit) {
    ask(MessageKind::MethodCall, {1, "pump", 0});
    ask(MessageKind::MethodCall, {2, "echo", 1, "inner"});
    pump();
    EXPECT_THAT(taken(), ElementsAre("note,in pump,null", "2:inner", "1:pumped"));
    for (int number = 0; number < 200; ++number) {
        ask(MessageKind::MethodCall, {number, number < 40 ? "pump" : "echo", 0});
    }
    pump();
    EXPECT_EQ(g_deepest, bridge::kMostOpenQuestions);
    EXPECT_LT(taken().size(), 200u) << "a flood does not keep the application";
    for (int round = 0; round < 10; ++round) {
        pump();
    }
    EXPECT_THAT(taken(), testing::Contains("199:"));
}

TEST_F(BrowserPageTest, RefusesCallsThatAreNotTaken) {
    const std::string mega(1 << 20, 'x');
    const char* argument = mega.c_str();
    int calls = 0;
    while (TAV_CallJS("note", &argument, 1) == TAV_NOERROR && calls < 100) {
        ++calls;
    }
    EXPECT_THAT(calls, testing::AllOf(testing::Ge(16), testing::Le(20)));
    EXPECT_STREQ(SDL_GetError(), "Unable to dispatch message");
    ask(MessageKind::MethodCall, {1, "echo", 1, "late"});
    pump();
    std::vector<std::string> all;
    for (int round = 0; round < 1000 && (all.empty() || all.back() != "1:late"); ++round) {
        const auto some = taken();
        all.insert(all.end(), some.begin(), some.end());
        device.pump();
    }
    EXPECT_EQ(all.size(), static_cast<size_t>(calls) + 1);
    note("again");
}

// A wait for events ends when the page asks. The other one only sends what is queued.
TEST_F(BrowserPageTest, WaitsEndOrAreUsed) {
    constexpr tavsim::Milliseconds kLong = 60000;
    const std::string mega(1 << 20, 'x');
    const char* argument = mega.c_str();
    EXPECT_EQ(TAV_CallJS("note", &argument, 1), TAV_NOERROR);
    EXPECT_TRUE(taken().empty()) << "a socket takes less at once";
    EXPECT_FALSE(tavsim::sendWhileWaiting(1, tavsim::Wait::ForEvents));
    std::thread reader([] { EXPECT_TRUE(g_server->receive()); });
    EXPECT_FALSE(tavsim::sendWhileWaiting(kLong, tavsim::Wait::ForTime));
    reader.join();
    ask(MessageKind::MethodList, {1});
    EXPECT_TRUE(tavsim::sendWhileWaiting(kLong, tavsim::Wait::ForEvents));
    EXPECT_FALSE(tavsim::sendWhileWaiting(kLong, tavsim::Wait::ForTime));
    pump();
    EXPECT_THAT(taken(), ElementsAre("1"));
    g_server.reset();
    EXPECT_TRUE(tavsim::sendWhileWaiting(kLong, tavsim::Wait::ForEvents));
    EXPECT_THAT(pump(), testing::HasSubstr("closed"));
    EXPECT_FALSE(tavsim::sendWhileWaiting(kLong, tavsim::Wait::ForEvents));
}

// However the page ends, one line says why, and the application goes on.
TEST_F(BrowserPageTest, EndsWithOneReason) {
    constexpr char kMalformed[] = "its server has sent a malformed message";
    constexpr char kClosed[] = "its server has closed the connection";
    const auto send = [](MessageKind kind, const std::string& content) {
        return [=] { g_server->queue(static_cast<uint8_t>(kind), content); };
    };
    const std::pair<std::function<void()>, const char*> cases[] = {
        {send(MessageKind::MethodList, ""), kMalformed},
        {send(MessageKind::MethodCall, items({"1"})), kMalformed},
        {send(MessageKind::ConsoleLine, items({"loud", "x"})), kMalformed},
        {send(MessageKind::ConsoleLine, items({"log", 1})), kMalformed},
        {send(MessageKind::Problem, items({1})), kMalformed},
        {send(MessageKind::FrameWanted, ""), kMalformed},
        {send(MessageKind::FrameWanted, "b\2"), kMalformed},  // neither true nor false
        {send(MessageKind::Touch, items({"sideways", 1, 1})), kMalformed},
        {send(MessageKind::Key, items({"a", true})), kMalformed},
        {send(MessageKind::Typed, items({nullptr, 1}).substr(1)), kMalformed},
        {send(MessageKind::Idle, ""), kMalformed},
        {send(static_cast<MessageKind>(255), "x"), kMalformed},
        {[] { g_server->queue(0, std::string(bridge::kLongestMessage + 1, 'x')); }, kClosed},
        {[] { g_server.reset(); }, kClosed},
        {[] {
             ask(MessageKind::MethodCall, {1, "vanish", 0});
         },
         kClosed},
    };
    for (const auto& [happens, reason] : cases) {
        open();
        const auto happensNow = [&happens = happens] {
            happens();
            if (g_server) {
                g_server->sendNow();
            }
        };
        EXPECT_EQ(pump(happensNow), std::string("index.html: stopped: ") + reason + "\n");
        EXPECT_EQ(pump(), "");
        EXPECT_EQ(TAV_CallJS("note", nullptr, 0), TAV_ECONNECTION);
    }
}

TEST_F(BrowserPageTest, MethodMayForgetTheMethodsQuitOrStopTheDevice) {
    for (const char* method : {"forget", "quit", "stop"}) {
        open();
        ask(MessageKind::MethodCall, {1, method, 0});
        ask(MessageKind::MethodCall, {2, "echo", 1, "x"});
        EXPECT_EQ(pump(), "");
        const std::vector<std::string> answers = taken();
        EXPECT_EQ(g_server->isGone(), std::string(method) == "stop");
        EXPECT_EQ(answers.size(), g_server->isGone() ? 0u : 2u);
    }
}

TEST_F(BrowserPageTest, ForkLeavesThePageAlone) {
    ask(MessageKind::MethodCall, {1, "echo", 1, "x"});
    const pid_t fork = ::fork();
    if (fork == 0) {
        device.pump();
        _exit(TAV_CallJS("note", nullptr, 0));
    }
    int status = 0;
    EXPECT_EQ(waitpid(fork, &status, 0), fork);
    EXPECT_EQ(WEXITSTATUS(status), TAV_ECONNECTION);
    EXPECT_THAT(taken(), testing::IsEmpty());
    pump();
    EXPECT_THAT(taken(), ElementsAre("1:x"));
}

TEST_F(BrowserPageTest, NeedsAServerAndRealTime) {
    testing::internal::CaptureStderr();
    start();
    device.acceptStreams();
    EXPECT_EQ(TAV_JSRegistrationComplete(), TAV_ECONNECTION);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "index.html: nobody serves the page (`tavsim run --page` does): "
              "No such file or directory\n");
    start(true);
    EXPECT_EQ(m_error,
              "/anywhere/index.html: a page in a browser is in real time, "
              "not in virtual time");
}

class PageViewTest : public BrowserPageTest {
protected:
    void SetUp() override {
        m_recordFile = testing::TempDir() + "/view-" + std::to_string(getpid()) + ".scenario";
        BrowserPageTest::SetUp();
        SDL_ShowCursor(SDL_DISABLE);  // SDL draws it into the picture
        m_surface = SDL_SetVideoMode(40, 30, 32, SDL_SWSURFACE);
        SDL_FillRect(m_surface, nullptr, 0);
        takeEvents();
    }

    void TearDown() override {
        BrowserPageTest::TearDown();
        std::filesystem::remove(m_recordFile);
    }

    static void takeEvents() {
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    }

    std::string frame(bool isWhole) {
        ask(MessageKind::FrameWanted, {isWhole});
        pump();
        const auto message = g_server->receiveNow();
        return message ? message->content : "";
    }

    // SDL's state: the mouse's buttons and position, and whether the left key is pressed.
    static std::vector<int> state() {
        int x = 0, y = 0;
        const int buttons = SDL_GetMouseState(&x, &y);
        return {buttons, x, y, SDL_GetKeyState(nullptr)[SDLK_LEFT]};
    }

    SDL_Surface* m_surface = nullptr;
};

TEST_F(PageViewTest, FramesHaveWhatChangesAndAllForAPageThatBeginsToLook) {
    const std::string whole = "{\"width\":40,\"height\":30,\"parts\":[[0,0,40,30]]}\n";
    std::string pixels(3600, '\0');
    EXPECT_TRUE(frame(true) == whole + pixels);
    SDL_Rect dot = {38, 29, 2, 1};
    SDL_FillRect(m_surface, &dot, SDL_MapRGB(m_surface->format, 1, 2, 3));
    pixels.replace(3594, 6, "\1\2\3\1\2\3");
    EXPECT_EQ(frame(false), "{\"width\":40,\"height\":30,\"parts\":[[38,29,2,1]]}\n\1\2\3\1\2\3");
    EXPECT_EQ(frame(false), "") << "nothing has changed";
    EXPECT_TRUE(frame(true) == whole + pixels);
}

TEST_F(PageViewTest, InputIsRecordedAsTheUsersAndReleasedWithThePage) {
    ask(MessageKind::Touch, {"down", 40, 4});
    ask(MessageKind::Touch, {"down", 3, 4});
    ask(MessageKind::Touch, {"move", 5, 6});
    ask(MessageKind::Touch, {"up", 99, -1});
    ask(MessageKind::Touch, {"down", 7, 8});
    ask(MessageKind::Typed, {"a\n"});
    ask(MessageKind::Typed, {"a"});
    ask(MessageKind::Key, {true, "left"});
    ask(MessageKind::Key, {true, "left"});
    takeEvents();
    EXPECT_THAT(state(), ElementsAre(1, 7, 8, 1));
    EXPECT_EQ(tavsim::carryOut("key tap right").error, "");
    g_server.reset();
    EXPECT_THAT(pump(), testing::HasSubstr("closed the connection"));
    takeEvents();
    EXPECT_THAT(state(), ElementsAre(0, 7, 8, 0));
    std::ifstream file(m_recordFile);
    std::vector<std::string> recorded;
    for (std::string line; std::getline(file, line);) {
        recorded.push_back(line.substr(line.find(": ") + 2));
    }
    EXPECT_THAT(recorded, ElementsAre("plugin on", "touch move 3 4", "touch down 3 4",
                                      "touch move 5 6", "touch up 5 6", "touch move 7 8",
                                      "touch down 7 8", "key down a", "key up a", "key down left",
                                      "key tap right", "touch up 7 8", "key up left"));
}

TEST_F(PageViewTest, StateFollowsWhereTheQueueIsFull) {
    SDL_Event other{};
    other.type = SDL_USEREVENT;
    while (SDL_PushEvent(&other) == 0) {}
    ask(MessageKind::Touch, {"down", 3, 4});
    ask(MessageKind::Key, {true, "left"});
    pump();
    EXPECT_THAT(state(), ElementsAre(1, 3, 4, 1));
    g_server.reset();
    pump();
    EXPECT_THAT(state(), ElementsAre(0, 3, 4, 0));
}

}  // namespace
