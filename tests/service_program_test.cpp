// Programs of the user's own that answer requests.
#include <sys/wait.h>

#include <chrono>

#include "device_test.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kUri[] = "a://b";
constexpr char kOtherUri[] = "a://c";
constexpr char kHasEnded[] =
    R"({"returnValue":false,"errorCode":-1,"errorText":"the service's program has ended"})";

class ServiceProgramTest : public tavtest::DeviceTest {
protected:
    void startWith(std::vector<std::string> command, bool virtualTime = true) {
        tavsim::Profile profile;
        for (const char* uri : {kUri, kOtherUri}) {
            profile.services[uri].program = {command, TAV_TESTS};
        }
        tavsim::Options options;
        options.virtualTime = virtualTime;
        ASSERT_TRUE(device.start(profile, options));
    }

    void startProgram(bool virtualTime = true) {
        startWith({"python3", "service_program.py"}, virtualTime);
    }

    int call(const std::string& payload, const char* uri = kUri) {
        return bus.ksCallWithResponse(uri, payload.c_str(), false, receive, &m_received);
    }

    int subscribe(const std::string& payload) {
        return bus.ksCallWithSubscription(kUri, payload.c_str(), false, receive, &m_received);
    }

    static void receive(int, const char* text, void* received) {
        static_cast<std::vector<std::string>*>(received)->emplace_back(
            std::to_string(tavsim::device().now()) + " " + (text != nullptr ? text : "(none)"));
    }

    // What has been received so far, each reply behind its time.
    std::vector<std::string> after(int milliseconds) {
        device.advance(milliseconds);
        return std::exchange(m_received, {});
    }

    // Stops the device, and expects that it leaves no process behind.
    void expectNothingLeft() {
        device.stop();
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }

    HKSCaller& bus = *NApp_GetKSCaller();

private:
    std::vector<std::string> m_received;
};

TEST_F(ServiceProgramTest, AnswersOnTheDevicesClock) {
    startProgram();
    device.advance(7);
    const int counter = subscribe("count");
    EXPECT_THAT(after(100), ElementsAre("7 [1,0]", "12 [1,1]", "107 [2,0]"));
    EXPECT_THAT(after(5), ElementsAre("112 [2,1]"));
    bus.ksCancelCall(counter);
    EXPECT_THAT(after(1000), IsEmpty());
    call(R"({ "a":"\u00e9" })", kOtherUri);
    bus.ksCall(kUri, "one way", false);
    EXPECT_THAT(after(100), ElementsAre("1132 {\"a\":\"\xc3\xa9\"}"));
    call("\"what have you heard\"");
    const auto heard = [counter](int behindCounter, const std::string& rest) {
        return "{\"id\":" + std::to_string(counter + behindCounter) + "," + rest + "}";
    };
    EXPECT_THAT(
        after(0),
        ElementsAre(
            "1212 [" +
            heard(0, R"("turn":1,"at":7,"uri":"a://b","subscribe":true,"payload":"count")") + "," +
            heard(0, R"("turn":2,"at":107,"uri":"a://b","subscribe":true,"payload":"count")") +
            "," + heard(0, R"("cancel":true)") + "," +
            heard(1,
                  "\"turn\":1,\"at\":1112,\"uri\":\"a://c\",\"subscribe\":false,"
                  "\"payload\":{\"a\":\"\xc3\xa9\"}") +
            "," +
            heard(2, R"("turn":1,"at":1112,"uri":"a://b","subscribe":false,"payload":"one way")") +
            "]"));
    expectNothingLeft();
}

TEST_F(ServiceProgramTest, InRealTimeRepliesArriveWhenTheyAreThere) {
    startProgram(false);
    subscribe("\"later\"");
    std::vector<std::string> received;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (received.size() < 2 && std::chrono::steady_clock::now() < limit) {
        device.pump();
        for (const std::string& reply : after(0)) {
            received.push_back(reply.substr(reply.find(' ') + 1));
        }
        SDL_Delay(1);
    }
    EXPECT_THAT(received, ElementsAre("at once", "later"));
    expectNothingLeft();
}

TEST_F(ServiceProgramTest, OneThatMisbehavesIsStoppedAndItsRequestsFail) {
    const struct {
        const char* what;
        const char* problem;
    } rows[] = {
        {"print garbage", "its output: not JSON: "},
        {"answer nobody", "its output: id: there is no request "},
        {"misspell", "its output: replay: unknown field; did you mean \"reply\"?\n"},
        {"print without end", "its output: a line of more than 1 MiB\n"},
        {"reply without end", "it has more than 10000 replies on their way\n"},
        {"exit", "it ended with status 3\n"},
        {"close its output", "it ended with signal 9\n"},
        {"be silent", "it did not answer within 5 seconds\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        startProgram();
        testing::internal::CaptureStderr();
        call("1");  // its reply is on its way
        call(std::string(R"({"do":")") + row.what + "\"}");
        call("3", kOtherUri);
        const std::vector<std::string> received = after(20);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_THAT(printed,
                    HasSubstr(std::string("python3 service_program.py: stopped: ") + row.problem));
        EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1);
        EXPECT_EQ(received.size(), 3U);
        EXPECT_EQ(received.back(), "20 1");
        EXPECT_THAT(received, testing::Contains(std::string("0 ") + kHasEnded));
        EXPECT_THAT(device.openCalls(), IsEmpty());
        expectNothingLeft();
    }
}

TEST_F(ServiceProgramTest, OneThatStaysOnIsKilledWithTheDevice) {
    startProgram();
    const int open = call(R"({"do":"stay on"})");
    EXPECT_THAT(after(1000), IsEmpty());
    EXPECT_THAT(device.openCalls(), ElementsAre(open));
    expectNothingLeft();
}

TEST_F(ServiceProgramTest, OneThatCannotBeRunIsNamed) {
    startWith({"./no such program"});
    testing::internal::CaptureStderr();
    call("1");
    call("2");
    EXPECT_THAT(after(0),
                ElementsAre(std::string("0 ") + kHasEnded, std::string("0 ") + kHasEnded));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "./no such program: cannot be run: No such file or directory\n");
    expectNothingLeft();
}

}  // namespace
