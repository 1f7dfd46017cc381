// The page: its script calls the application's methods and is called by the application.
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "js/handlers.h"
#include "transcript.h"

namespace {

// The application's methods.

void add(TAV_JSParameters* parameters) {
    if (TAV_GetNumJSParams(parameters) != 2) {
        TAV_JSException(parameters, "add needs two numbers \xe2\x9c\x97");
        return;
    }
    const int sum = TAV_GetJSParamInt(parameters, 0) + TAV_GetJSParamInt(parameters, 1);
    TAV_JSReply(parameters, std::to_string(sum).c_str());
}

void echo(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

void callBack(TAV_JSParameters* parameters) {
    const char* arguments[] = {TAV_GetJSParamString(parameters, 0), nullptr};
    EXPECT_EQ(TAV_CallJS("note", arguments, 2), TAV_NOERROR);
}

void pollThenReply(TAV_JSParameters* parameters) {
    callBack(parameters);
    SDL_Delay(50);
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {}
    TAV_JSReply(parameters, "polled");
}

const std::pair<const char*, TAV_JSHandler> kMethods[] = {
    {"add", add},
    {"echo", echo},
    {"garbage",
     [](TAV_JSParameters* call) {
         TAV_JSReply(call, "a\xff\xc3(\xed\xa0\xbd\xf4\x90\x80\x80z\xe2\x82");
     }},
    {"registerMore", [](TAV_JSParameters*) { TAV_RegisterJSHandler("late", echo); }},
    {"forgetAll", [](TAV_JSParameters*) { TAV_JSQuit(); }},
    {"callBack", callBack},
    {"pollThenReply", pollThenReply},
    {"callAgain",
     [](TAV_JSParameters* call) {
         TAV_JSReply(call, tavsim::carryOut("page call add 1 2").error.c_str());
     }},
    {"stopDevice", [](TAV_JSParameters*) { tavsim::device().stop(); }},
};

// The child processes of this one, zombies included.
std::vector<pid_t> childProcesses() {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        std::string name, state;
        pid_t process = 0, parent = 0;
        if (stat >> process >> name >> state >> parent && parent == getpid()) {
            children.push_back(process);
        }
    }
    return children;
}

class PageTest : public tavtest::TranscriptTest {
protected:
    struct Output {
        std::string out, err;
    };

    void SetUp() override {
        TranscriptTest::SetUp();
        ASSERT_NE(mkdtemp(m_folder.data()), nullptr);
    }

    void TearDown() override {
        TranscriptTest::TearDown();
        EXPECT_THAT(childProcesses(), testing::IsEmpty());
        std::filesystem::remove_all(m_folder);
    }

    // Starts the application as the plug-in of a page with this script.
    void openPage(const std::string& script) {
        std::ofstream(m_folder + "/page.js") << script;
        startPlugin(m_folder + "/page.js");
    }

    void startPlugin(const std::string& pageFile) {
        tavsim::Profile profile;
        profile.plugin = true;
        startDevice(profile, pageFile);
        for (const auto& [name, method] : kMethods) {
            TAV_RegisterJSHandler(name, method);
        }
        ASSERT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
    }

    // What is printed within a second.
    Output watch(const std::function<void()>& before = [] {}) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        device.acceptStreams();
        before();
        device.advance(1000);
        return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }

    std::string m_folder = testing::TempDir() + "/page-XXXXXX";
};

TEST_F(PageTest, Scripts) {
    const char* scripts[] = {
        // Calls
        "var c = component;"
        "console.log(c.methods().slice(0, 3), typeof c.add(1, 1), c.add === c.add);"
        "console.log(c.add(2, '40'), c.call('add', 1, 2), '<' + c.callBack('x') + '>');"
        "c.on('note', function (text, other) { console.log(text, other === null) });"
        "console.log('late' in c, typeof c.late, typeof Duktape); c.registerMore();"
        "console.log(c.on('other', function () {}));"
        "console.log('late' in c, c.late('now'))",
        // Exceptions
        "try { component.add(1) } catch (e) { console.log(e instanceof Error, e.lineNumber) }"
        "component.forgetAll(); console.log(component.methods().length);"
        "try { component.call('add', 1, 2) } catch (e) { console.log(e.message) }\n"
        "component.add(1, 2)",
        "\n\ncomponent.add()",
        "component.add({ toString: function () { throw new Error('no text') } }, 1)",
        // Text
        "var smile = '\xf0\x9f\x98\x80'; console.log(smile.length, smile);"
        "var echo = component.echo; console.log(echo(smile) === smile);"
        "console.log('\\u00e9 \\u20ac \\ud83d \\ude00x \\ud83d\\ud83d\\ude00');"
        "console.log([echo(null), echo(undefined), echo(1.5), echo([1, 2]), echo('')].join('|'));"
        "console.log(escape(component.garbage()))",
        "console.log(); console.log('a', 1, null, undefined, true); console.warn('w', 2);"
        "console.error('e')",
        // Scripts that fail
        "var fine = 1;\nvar broken = ;",
        "console.log('before');\n\nthrow new RangeError('too far');",
        "function fail() {\n  throw 'just text';\n}\nfail();",
        "throw { toString: function () { throw new Error('again') } }",
        "(function deeper() { deeper() })()", "var text = 'x';\nwhile (true) text += text",
        "while (true) setTimeout(function () {}, 1e6)",
        // Timers
        "setTimeout(function (a) { console.log('later', a) }, 300, 'x');"
        "setTimeout(function () { console.log('sooner') }, 200);"
        "setTimeout(function () { console.log('at once') });"
        "setTimeout(function () { console.log('too late') }, 1001); console.log('first')",
        "var n = 0, timer = setInterval(function () { if (++n === 3) clearInterval(timer) }, 10);"
        "clearTimeout(setTimeout(function () { console.log('cleared') }, 5));"
        "setTimeout(function () { console.log(n) }, 500);"
        "setInterval(function () { throw new Error('tick') }, 400);"};
    for (const char* script : scripts) {
        openPage(script);
        const Output output = watch();
        note(cut(script) + "\n" + output.out + output.err);
    }
}

TEST_F(PageTest, CommandsCallMethodsBetweenTwoRunsOfTheScript) {
    constexpr char kBusy[] = "page call: the page's script is in a call itself";
    const std::pair<const char*, std::string> cases[] = {
        {"add 2 40", "42\n"},
        {R"(echo "a \u00e9 \"" b)", "a é \"\n"},
        {"add 1", "page call: add needs two numbers \xe2\x9c\x97"},
        {"callAgain", std::string(kBusy) + "\n"},
        {"ad 1 2", R"(page call: no method "ad"; did you mean "add"?)"},
        {"echo \"a", R"(page call: "\"a": what begins with a quote must be a JSON string)"},
    };
    const auto command = [](const std::string& line) {
        const tavsim::CommandResult result = tavsim::carryOut("page call " + line);
        return result.error + result.output;
    };
    startPlugin({});
    EXPECT_EQ(command("add 1 2"), "page call: no page runs");
    openPage("component.add(null, 2); console.warn(component.callAgain()); nothing()");
    const Output output = watch([&] {
        for (const auto& [line, answer] : cases) {
            EXPECT_EQ(command(line), answer);
        }
    });
    EXPECT_THAT(tavsim::carryOut("state --json").output,
                testing::HasSubstr(R"("page":{"methods":["add","echo",)"));
    std::string entries;
    for (const std::string& line : device.journal()) {
        const bool isOfPage = line.find(R"("kind":"page",)") != std::string::npos;
        entries += isOfPage ? line.substr(line.find("what") - 1) + "\n" : "";
    }
    EXPECT_THAT(entries, testing::StartsWith(
                             R"("what":"call","method":"add","arguments":["2","40"],"outcome":"42"}
"what":"call","method":"echo","arguments":["a é \"","b"],"outcome":"a é \""}
"what":"call","method":"add","arguments":["1"],"outcome":"exception: add needs two numbers ✗"}
)"));
    EXPECT_THAT(entries,
                testing::HasSubstr(R"("method":"add","arguments":[null,"2"],"outcome":"2"})"));
    EXPECT_THAT(entries, testing::HasSubstr(std::string(R"("level":"warn","text":")") + kBusy));
    EXPECT_THAT(entries,
                testing::HasSubstr(R"("level":"error","text":"page.js:1: ReferenceError)"));
}

TEST_F(PageTest, StartsOnceAndOnlyWhenTheApplicationPumps) {
    testing::internal::CaptureStdout();
    openPage("console.log('running'); setTimeout(function () { console.log('still') }, 1500)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(watch().out, "[page] running\n");
    EXPECT_EQ(watch([] { TAV_JSRegistrationComplete(); }).out, "[page] still\n");
}

TEST_F(PageTest, ApplicationCallsThePage) {
    const char* arguments[] = {"\xf0\x9f\x98\x80", nullptr, "", "\xff"};
    openPage(
        "component.on('draw', function () {"
        "  console.log(arguments.length, Array.prototype.join.call(arguments, '|')) });"
        "component.on('fail', function () {\n throw new Error('in the page') });");
    const Output output = watch([&] {
        CALL(TAV_CallJS("draw", arguments, 4));
        CALL(TAV_CallJS("draw", nullptr, 0));
        CALL(TAV_CallJS("fail", nullptr, 0));
        CALL(TAV_CallJS("dance", arguments, 1));
        TAV_JSQuit();
        CALL(TAV_CallJS("draw", arguments + 2, 1));
        CALL(TAV_CallJS(nullptr, arguments, 1));
        CALL(TAV_CallJS("draw", nullptr, 1));
        device.profile.refused.insert("bridge");
        CALL(TAV_CallJS("draw", arguments, 1));
    });
    note(output.out + output.err);

    startPlugin({});
    CALL(TAV_CallJS("draw", arguments, 1));
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
    for (const std::string& unreadable : {m_folder, m_folder + "/none.js"}) {
        EXPECT_THAT(watch([&] { startPlugin(unreadable); }).err, testing::HasSubstr("file"));
        CALL(TAV_CallJS("draw", arguments, 1));
    }
}

// The application calls the page from within a method that the script called. The page's function
// must not run inside the script: it waits until the script has finished, and for the next pump.
TEST_F(PageTest, ScriptRunsToCompletionWhileAMethodPolls) {
    testing::internal::CaptureStdout();
    openPage(
        "component.on('note', function (text) {"
        "  console.log('note', text);"
        "  if (text === 'outer') component.pollThenReply('inner');"
        "  console.log('noted', text) });"
        "setTimeout(function () { console.log('timer') }, 20);"
        "console.log(component.pollThenReply('outer'));"
        "console.log('end of script')");
    device.pump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[page] polled\n[page] end of script\n");
    const Output output = watch();
    EXPECT_EQ(output.out + output.err,
              "[page] note outer\n[page] noted outer\n[page] timer\n"
              "[page] note inner\n[page] noted inner\n");
}

// However a page ends, it says why in one line, leaves no process, and the application goes on.
TEST_F(PageTest, EndsWithOneReason) {
    constexpr char kTooLong[] = "the script ran for more than 2 seconds without a pause";
    int channel = 1023;
    int own[2] = {};
    const auto closeChannelAndOpenOther = [&] {
        // The socket to the page is the one with the highest descriptor.
        for (struct stat status = {}; fstat(channel, &status) != 0 || !S_ISSOCK(status.st_mode);) {
            --channel;
        }
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, own), 0);
        ASSERT_EQ(dup2(own[0], channel), channel);
        close(own[0]);
    };
    const std::tuple<const char*, std::function<void()>, const char*> cases[] = {
        {"while (true) {}", [] {}, kTooLong},
        {"for (var t = 'x'; ; component.echo(t)) if (t.length < 1e6) t += t", [] {}, kTooLong},
        {"", [] { kill(childProcesses().at(0), SIGKILL); },
         "the page's process ended with signal 9"},
        {"", closeChannelAndOpenOther, "the application closed its connection to the page"},
    };
    for (const auto& [script, before, reason] : cases) {
        SCOPED_TRACE(reason);
        openPage(std::string("setTimeout(function () {") + script + "}, 1500)");
        EXPECT_EQ(watch().err, "");
        EXPECT_EQ(watch(before).err, std::string("page.js: stopped: ") + reason + "\n");
        EXPECT_THAT(childProcesses(), testing::IsEmpty());
        EXPECT_EQ(TAV_CallJS("note", nullptr, 0), TAV_ECONNECTION);
        EXPECT_STREQ(SDL_GetError(), "Unable to dispatch message");
    }
    char byte;
    EXPECT_EQ(close(channel), 0) << "it was the application's own, and open";
    EXPECT_EQ(::read(own[1], &byte, 1), 0) << "nothing was to be written to it";
    close(own[1]);
}

TEST_F(PageTest, ForkLeavesThePageAlone) {
    openPage("setInterval(function () { console.log('tick') }, 400)");
    const Output output = watch([this] {
        device.advance(500);
        const pid_t fork = ::fork();
        if (fork == 0) {
            device.advance(1000);
            _exit(TAV_CallJS("note", nullptr, 0));
        }
        int status = 0;
        EXPECT_EQ(waitpid(fork, &status, 0), fork);
        EXPECT_EQ(WEXITSTATUS(status), TAV_ECONNECTION);
    });
    EXPECT_EQ(output.out, "[page] tick\n[page] tick\n[page] tick\n");
}

TEST_F(PageTest, CallThatFailsAndCallThatStopsTheDevice) {
    openPage("component.add(1, 2)");
    device.failNth(tavsim::Fault::Read, 1);
    EXPECT_EQ(watch().err, "page.js:1: Error: The application could not read the call\n");
    openPage("component.stopDevice(); console.log('never')");
    EXPECT_EQ(watch().out, "");
}

}  // namespace
