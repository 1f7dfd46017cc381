// Programs of the user's that act as services.
#include <sys/wait.h>

#include <chrono>

#include "transcript.h"

namespace {

using testing::HasSubstr;

constexpr char kUri[] = "a://b";
constexpr char kOtherUri[] = "a://c";

class ServiceProgramTest : public tavtest::TranscriptTest {
protected:
    void TearDown() override {
        device.stop();
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process was left behind";
        TranscriptTest::TearDown();
    }

    void start(bool virtualTime = true, const std::string& program = "python3 service_program.py") {
        tavsim::Profile profile;
        for (const char* uri : {kUri, kOtherUri}) {
            profile.services[uri].program = {split(program, ' '), TAV_TESTS};
        }
        tavsim::Options options;
        options.virtualTime = virtualTime;
        ASSERT_TRUE(device.start(profile, options));
        note("");
    }

    void tell(const std::string& what) { call(kUri, R"({"do":")" + what + "\"}"); }

    // The replies in the journal.
    std::vector<std::string> replies() const {
        std::vector<std::string> lines;
        std::ranges::copy_if(device.journal(), std::back_inserter(lines),
                             [](const auto& line) { return line.find("\"reply\":") != line.npos; });
        return lines;
    }

    void pumpUntilReplies(size_t count) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (replies().size() < count && std::chrono::steady_clock::now() < limit) {
            device.pump();
            SDL_Delay(1);
        }
    }
};

TEST_F(ServiceProgramTest, AnswersOnTheDevicesClock) {
    start();
    device.advance(7);
    const int counter = subscribe(kUri, "count");
    pass(100);
    pass(5);
    bus.ksCancelCall(counter);
    pass(1000);
    call(kOtherUri, R"({ "a":"\u00e9" })");
    bus.ksCall(kUri, "one way", false);
    pass(100);
    call(kUri, "\"what have you heard\"");
    pass(0);
}

TEST_F(ServiceProgramTest, InRealTimeRepliesArriveWhenTheyAreThere) {
    start(false);
    subscribe(kUri, "\"later\"");
    pumpUntilReplies(2);
    EXPECT_THAT(replies(), testing::ElementsAre(HasSubstr("at once"), HasSubstr("later")));
}

TEST_F(ServiceProgramTest, InRealTimeOneThatEndsIsNoticed) {
    for (const char* what : {"exit", "close its output", "leave a child that holds its output"}) {
        start(false);
        tell(what);
        pumpUntilReplies(1);
        EXPECT_THAT(replies(), testing::ElementsAre(HasSubstr("has ended"))) << what;
    }
}

TEST_F(ServiceProgramTest, OneThatMisbehavesIsStoppedAndItsRequestsFail) {
    const std::pair<const char*, const char*> rows[] = {
        {"print garbage", "its output: not JSON: "},
        {"answer nobody", "its output: id: there is no request "},
        {"misspell", "its output: replay: unknown field; did you mean \"reply\"?\n"},
        {"say too much at once", "its output: a line of more than 1 MiB\n"},
        {"reply without end", "it has more than 10000 replies on their way\n"},
        {"exit", "it ended with status 3\n"},
        {"close its output", "it closed its standard input or output\n"},
        {"leave a child that holds its output", "it ended with status 4\n"},
        {"be silent", "it did not answer within 5 seconds\n"},
    };
    for (const auto& [what, problem] : rows) {
        SCOPED_TRACE(what);
        testing::internal::CaptureStderr();
        start();
        call(kUri, "1");  // its reply is on its way
        tell(what);
        call(kOtherUri, "3");
        device.advance(20);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_THAT(printed, HasSubstr(join("python3 service_program.py: stopped: ", problem)));
        EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1);
        EXPECT_THAT(replies(), testing::ElementsAre(HasSubstr("the service's program has ended"),
                                                    testing::_, HasSubstr("\"reply\":\"1\"")));
        EXPECT_THAT(device.openCalls(), testing::IsEmpty());
    }
}

TEST_F(ServiceProgramTest, OneThatStaysOnIsKilledWithTheDevice) {
    start();
    tell("stay on");
    pass(1000);
    CALL(device.openCalls().size());
}

TEST_F(ServiceProgramTest, OneThatCannotBeRunIsNamed) {
    testing::internal::CaptureStderr();
    start(true, "./no-such-program");
    call(kUri, "1");
    call(kUri, "2");
    pass(0);
    note(testing::internal::GetCapturedStderr());
}

}  // namespace
