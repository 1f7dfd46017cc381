// The page: its script calls the application's methods and is called by the application.
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "page.h"

namespace {

using tavtest::childProcesses;
using tavtest::PageTest;

// The number of the socket to the page: the last of this process, out of the way of others.
int socketNumber() {
    constexpr int kLastNumber = 1023;
    struct stat status = {};
    int number = kLastNumber;
    while (number > 0 && (fstat(number, &status) != 0 || !S_ISSOCK(status.st_mode))) {
        --number;
    }
    return number;
}

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
        const Output output = play(script);
        note(cut(script) + "\n" + output.out + output.err);
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

// The page's calls while one of its own calls is under way wait until the script has finished, and
// then for the next pump.
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
    EXPECT_EQ(output.out,
              "[page] note outer\n"
              "[page] noted outer\n"
              "[page] timer\n"
              "[page] note inner\n"
              "[page] noted inner\n");
    EXPECT_EQ(output.err, "");
}

// However a page ends, it says why in one line, leaves no process, and the application goes on.
TEST_F(PageTest, EndsWithOneReason) {
    constexpr char kTooLong[] = "the script ran for more than 2 seconds without a pause";
    int channel = 0;
    int own[2] = {};
    const auto closeChannelAndOpenOther = [&] {
        channel = socketNumber();
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
        expectFailure("TAV_CallJS", "Unable to dispatch message");
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
    EXPECT_EQ(play("component.stopDevice(); console.log('never')").out, "");
}

}  // namespace
