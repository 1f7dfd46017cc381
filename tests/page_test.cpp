// The page: its script calls the application's methods and is called by the application.
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "device_test.h"
#include "js/handlers.h"

namespace {

using testing::HasSubstr;

constexpr char kUnableToDispatch[] = "Unable to dispatch message";

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

// The parameters' bytes as the application sees them.
void bytes(TAV_JSParameters* parameters) {
    std::string shown;
    for (int index = 0; index < TAV_GetNumJSParams(parameters); ++index) {
        shown += '[';
        for (const char* text = TAV_GetJSParamString(parameters, index); *text != '\0'; ++text) {
            char byte[3];
            std::snprintf(byte, sizeof byte, "%02x", static_cast<unsigned char>(*text));
            shown += byte;
        }
        shown += ']';
    }
    TAV_JSReply(parameters, shown.c_str());
}

void garbage(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, "a\xff\xc3(\xed\xa0\xbd\xf4\x90\x80\x80z\xe2\x82");
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

void stopDevice(TAV_JSParameters* parameters) {
    tavsim::device().stop();
    TAV_JSReply(parameters, "stopped");
}

const std::pair<const char*, TAV_JSHandler> kMethods[] = {
    {"add", add},
    {"echo", echo},
    {"bytes", bytes},
    {"garbage", garbage},
    {"registerMore", [](TAV_JSParameters*) { TAV_RegisterJSHandler("late", echo); }},
    {"forgetAll", [](TAV_JSParameters*) { TAV_JSQuit(); }},
    {"callBack", callBack},
    {"pollThenReply", pollThenReply},
    {"stopDevice", stopDevice},
};

// Processes that this one started and that are there, dead or alive.
std::vector<pid_t> childProcesses() {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string stat;
        int process = 0;
        int parent = 0;
        if (std::getline(file, stat) &&
            std::sscanf(stat.c_str(), "%d (%*[^)]) %*c %d", &process, &parent) == 2 &&
            parent == getpid()) {
            children.push_back(process);
        }
    }
    return children;
}

class PageTest : public tavtest::EventTest {
protected:
    struct Output {
        std::string out;
        std::string err;
    };

    void SetUp() override {
        EventTest::SetUp();
        std::string folder = testing::TempDir() + "/page-XXXXXX";
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        m_folder = folder;
    }

    void TearDown() override {
        EventTest::TearDown();
        EXPECT_THAT(childProcesses(), testing::IsEmpty());
        std::filesystem::remove_all(m_folder);
    }

    std::string scriptPath() const { return m_folder / "page.js"; }

    // Starts the application as the plug-in of a page with this script.
    void openPage(const std::string& script) {
        std::ofstream(scriptPath()) << script;
        startPlugin(scriptPath());
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

    // What happens within a second and what it prints.
    Output watch(const std::function<void()>& before = [] {}) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        before();
        device.advance(1000);
        return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }

    Output play(const std::string& script) {
        openPage(script);
        return watch();
    }

private:
    std::filesystem::path m_folder;
};

TEST_F(PageTest, Scripts) {
    const struct {
        const char* script;
        const char* out;
        const char* err;
    } cases[] = {
        // Calls
        {"var c = component;"
         "console.log(c.methods().slice(0, 3), typeof c.add(1, 1), c.add === c.add);"
         "console.log(c.add(2, '40'), c.call('add', 1, 2), '<' + c.callBack('x') + '>');"
         "c.on('note', function (text, other) { console.log(text, other === null) });"
         "console.log('late' in c, typeof c.late); c.registerMore();"
         "console.log('late' in c, c.late('now'))",
         "[page] add,echo,bytes string true\n[page] 42 3 <>\n[page] false undefined\n"
         "[page] true now\n[page] x true\n",
         ""},

        // Exceptions
        {"try { component.add(1) } catch (e) { console.log(e instanceof Error, e.lineNumber) }"
         "component.forgetAll(); console.log(component.methods().length);"
         "try { component.call('add', 1, 2) } catch (e) { console.log(e.message) }\n"
         "component.add(1, 2)",
         "[page] true 1\n[page] 0\n[page] Unknown Function\n",
         "page.js:2: TypeError: undefined not callable (property 'add' of [object Object])\n"},
        {"\n\ncomponent.add()", "", "page.js:3: Error: add needs two numbers \xe2\x9c\x97\n"},
        {"component.add({ toString: function () { throw new Error('no text') } }, 1)", "",
         "page.js:1: Error: no text\n"},

        // Text
        {"var smile = '\xf0\x9f\x98\x80'; console.log(smile.length, component.bytes(smile),"
         "component.echo(smile) === smile, smile);"
         "console.log(component.bytes('\\u00e9', '\\u20ac', '\\ud83d', '\\ude00x', "
         "'\\ud83d\\ud83d\\ude00'));"
         "console.log(component.bytes('a', null, undefined, 1.5, [1, 2], ''));"
         "console.log(escape(component.garbage()))",
         "[page] 2 [f09f9880] true \xf0\x9f\x98\x80\n"
         "[page] [c3a9][e282ac][efbfbd][efbfbd78][efbfbdf09f9880]\n"
         "[page] [61][][][312e35][312c32][]\n"
         "[page] a%uFFFD%uFFFD%28%uFFFD%uFFFD%uFFFD%uFFFD%uFFFD%uFFFD%uFFFDz%uFFFD%uFFFD\n",
         ""},
        {"console.log(); console.log('a', 1, null, undefined, true); console.warn('w', 2);"
         "console.error('e')",
         "[page] \n[page] a 1 null undefined true\n", "[page] w 2\n[page] e\n"},

        // Scripts that fail
        {"var fine = 1;\nvar broken = ;", "",
         "page.js:2: SyntaxError: empty expression not allowed (line 2, end of input)\n"},
        {"console.log('before');\n\nthrow new RangeError('too far');", "[page] before\n",
         "page.js:3: RangeError: too far\n"},
        {"function fail() {\n  throw 'just text';\n}\nfail();", "",
         "page.js:2: uncaught just text\n"},
        {"throw { toString: function () { throw new Error('again') } }", "",
         "page.js: Error: again\n"},
        {"(function deeper() { deeper() })()", "", "page.js:1: RangeError: callstack limit\n"},
        {"var text = 'x';\nwhile (true) text += text", "", "page.js:2: Error: alloc failed\n"},

        // Timers
        {"setTimeout(function (a) { console.log('later', a) }, 300, 'x');"
         "setTimeout(function () { console.log('sooner') }, 200);"
         "setTimeout(function () { console.log('at once') });"
         "setTimeout(function () { console.log('too late') }, 1001); console.log('first')",
         "[page] first\n[page] at once\n[page] sooner\n[page] later x\n", ""},
        {"var n = 0, timer = setInterval(function () { if (++n === 3) clearInterval(timer) }, 10);"
         "clearTimeout(setTimeout(function () { console.log('cleared') }, 5));"
         "setTimeout(function () { console.log(n) }, 500);"
         "setInterval(function () { throw new Error('tick') }, 400);",
         "[page] 3\n", "page.js:1: Error: tick\npage.js:1: Error: tick\n"},
    };
    for (const auto& [script, out, err] : cases) {
        SCOPED_TRACE(script);
        const Output output = play(script);
        EXPECT_EQ(output.out, out);
        EXPECT_EQ(output.err, err);
    }
}

TEST_F(PageTest, StartsOnceAndOnlyWhenTheApplicationPumps) {
    testing::internal::CaptureStdout();
    openPage("console.log('running'); setTimeout(function () { console.log('still') }, 1500)");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(watch().out, "[page] running\n");
    const Output output = watch([] { EXPECT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR); });
    EXPECT_EQ(output.out, "[page] still\n");
}

TEST_F(PageTest, ApplicationCallsThePage) {
    openPage(
        "component.on('draw', function () {"
        "  console.log(arguments.length, Array.prototype.join.call(arguments, '|')) });"
        "component.on('fail', function () {\n throw new Error('in the page') });");
    const Output output = watch([this] {
        const char* arguments[] = {"\xf0\x9f\x98\x80", nullptr, "", "\xff"};
        EXPECT_EQ(TAV_CallJS("draw", arguments, 4), TAV_NOERROR);
        EXPECT_EQ(TAV_CallJS("draw", nullptr, 0), TAV_NOERROR);
        EXPECT_EQ(TAV_CallJS("fail", nullptr, 0), TAV_NOERROR);
        EXPECT_EQ(TAV_CallJS("dance", arguments, 1), TAV_NOERROR);
        TAV_JSQuit();
        EXPECT_EQ(TAV_CallJS("draw", arguments + 2, 1), TAV_NOERROR);
        EXPECT_THAT(device.journal().back(),
                    HasSubstr(R"("what":"NApp_JSCall","function":"draw")"));
    });
    EXPECT_EQ(output.out,
              "[page] 4 \xf0\x9f\x98\x80|||\xef\xbf\xbd\n"
              "[page] 0 \n"
              "[page] 1 \n");
    EXPECT_EQ(output.err,
              "page.js:2: Error: in the page\n"
              "[page] nobody listens to dance\n");
}

TEST_F(PageTest, HostRefusesCallsItCannotPassOn) {
    openPage("");
    const char* arguments[] = {"text"};
    const struct {
        const char* function;
        const char** arguments;
        int count;
    } calls[] = {{nullptr, arguments, 1}, {"draw", nullptr, 1}, {"draw", arguments, -1}};
    for (const auto& call : calls) {
        EXPECT_EQ(TAV_CallJS(call.function, call.arguments, call.count), TAV_ECONNECTION);
        expectFailure("TAV_CallJS", kUnableToDispatch);
    }
    EXPECT_EQ(TAV_CallJS("draw", arguments, 1), TAV_NOERROR);
    device.profile.refused.insert("bridge");
    EXPECT_EQ(TAV_CallJS("draw", arguments, 1), TAV_ECONNECTION);
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("outcome":"refused")"));
}

TEST_F(PageTest, HostWithoutAPageThatCanBeRead) {
    startPlugin({});
    const Output output = watch([] { EXPECT_EQ(TAV_CallJS("draw", nullptr, 0), TAV_NOERROR); });
    EXPECT_EQ(output.out + output.err, "");
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("outcome":"accepted")"));
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
    for (const std::string& path : {scriptPath(), testing::TempDir()}) {
        testing::internal::CaptureStderr();
        startPlugin(path);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cannot be read: "));
        EXPECT_EQ(TAV_CallJS("draw", nullptr, 0), TAV_ECONNECTION);
    }
}

// The page's calls while one of its own calls is under way wait until the script has finished.
TEST_F(PageTest, ScriptRunsToCompletionWhileAMethodPolls) {
    const Output output = play(
        "component.on('note', function (text) {"
        "  console.log('note', text);"
        "  if (text === 'outer') component.pollThenReply('inner');"
        "  console.log('noted', text) });"
        "setTimeout(function () { console.log('timer') }, 20);"
        "console.log(component.pollThenReply('outer'));"
        "console.log('end of script')");
    EXPECT_EQ(output.out,
              "[page] polled\n"
              "[page] end of script\n"
              "[page] note outer\n"
              "[page] noted outer\n"
              "[page] timer\n"
              "[page] note inner\n"
              "[page] noted inner\n");
    EXPECT_EQ(output.err, "");
}

TEST_F(PageTest, MessageThatTheApplicationCannotRead) {
    openPage("console.log(component.add(1, 2));");
    device.failNth(tavsim::Fault::Read, 1);
    EXPECT_EQ(watch().err, "page.js:1: Error: The application could not read the call\n");
}

TEST_F(PageTest, EndlessLoopIsStopped) {
    openPage("setTimeout(function () { console.log('looping'); while (true) {} }, 100)");
    EXPECT_EQ(watch().err,
              "page.js: stopped: the script ran for more than 2 seconds without a pause\n");
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
    EXPECT_EQ(TAV_CallJS("note", nullptr, 0), TAV_ECONNECTION);
    expectFailure("TAV_CallJS", kUnableToDispatch);
}

TEST_F(PageTest, PageProcessThatDies) {
    openPage("setInterval(function () { console.log('alive') }, 600)");
    EXPECT_EQ(watch().out, "[page] alive\n");
    const std::vector<pid_t> children = childProcesses();
    ASSERT_EQ(children.size(), 1u);
    kill(children.front(), SIGKILL);
    EXPECT_EQ(watch().err, "page.js: stopped: the page's process ended with signal 9\n");
    EXPECT_THAT(childProcesses(), testing::IsEmpty());
    EXPECT_EQ(TAV_CallJS("note", nullptr, 0), TAV_ECONNECTION);
}

TEST_F(PageTest, MethodThatStopsTheDevice) {
    EXPECT_EQ(play("console.log(component.stopDevice()); console.log('never')").out, "");
}

}  // namespace
