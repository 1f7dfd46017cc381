#include "services/service_calls.h"

#include <functional>

#include "services/blocking_call.h"
#include "transcript.h"

namespace {

using tavtest::repliesOf;
using tavtest::Requests;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kUri[] = "vire://com.example.test/ask";
constexpr char kTicksUri[] = "vire://com.example.test/ticks";
constexpr char kItemsUri[] = "vire://com.vire.service.payment/getAvailableItems";

// Blocking calls.

using BlockingCallTest = tavtest::EventTest;

TEST_F(BlockingCallTest, WaitsInPassesOf50Milliseconds) {
    constexpr int kNever = 90000;  // when nobody waits any more
    const struct {
        int timeoutMs;
        int replyAfter;
        bool answered;
        long endsAt;
    } cases[] = {{1, kNever, false, 50},      {50, kNever, false, 50},
                 {51, kNever, false, 100},    {100, kNever, false, 100},
                 {51, 0, true, 50},           {50, 0, false, 50},
                 {15000, 14900, true, 14950}, {15000, 14901, false, 15000},
                 {0, 60010, true, 60100},     {-1, 60010, true, 60100}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.timeoutMs << " ms, reply after " << c.replyAfter);
        startDevice({});
        device.profile.services[kUri] = repliesOf({"reply"}, c.replyAfter);
        const tav::HStringPtr reply = tav::blockingKSCall(kUri, "{}", false, c.timeoutMs);
        EXPECT_EQ(device.now(), c.endsAt);
        EXPECT_THAT(device.openCalls(), IsEmpty());
        ASSERT_EQ(reply != nullptr, c.answered);
        if (c.answered) {
            EXPECT_STREQ(HString_toStr(reply.get()), "reply");
        } else {
            expectFailure("blockingKSCall", "Timed out waiting for response to call");
        }
        device.advance(100000);
    }
}

void pushEvent(TAV_ServiceParameters*, void*) {
    SDL_Event event{};
    event.type = SDL_USEREVENT;
    SDL_PushEvent(&event);
}

TEST_F(BlockingCallTest, DropsTheEventsThatAreQueuedBeforeAndDuringTheWait) {
    device.profile.services[kUri] = repliesOf({"reply"}, 100);
    device.profile.services[kTicksUri] = repliesOf({"{}"}, 0, 40);
    TAV_ServiceCallWithCallback(kTicksUri, "{}", pushEvent, nullptr, SDL_FALSE);
    pushEvent(nullptr, nullptr);
    EXPECT_NE(tav::blockingKSCall(kUri, "{}", false, 1000), nullptr);
    TAV_UnregisterServiceCallback(pushEvent);
    EXPECT_THAT(userEvents(), IsEmpty());
}

TEST_F(BlockingCallTest, JoinsRepliesAndTakesANullOneAsEmpty) {
    tav::BlockingCallContext call{tav::HStringPtr(HString_alloc())};
    for (const char* reply : {"one", static_cast<const char*>(nullptr), "%s two"}) {
        tav::blockingCallCallback(7, reply, &call);
        EXPECT_TRUE(call.done);
    }
    EXPECT_STREQ(HString_toStr(call.reply.get()), "one%s two");
    EXPECT_THAT(trace().front(), StartsWith("tav_9 blockingCallCallback 7, one, 0x"));
    device.failNth(tavsim::Fault::Allocation, 1);
    tav::blockingCallCallback(7, "three", &call);
    tav::blockingCallCallback(7, "four", &call);
    EXPECT_EQ(call.reply, nullptr);
}

// Calls with a reply function.

std::vector<std::string> g_replies;
std::function<void()> g_onReply;

void replyFunction(TAV_ServiceParameters* parameters, void* userData) {
    const char* name = static_cast<const char*>(userData);
    const char* text = TAV_GetParamJson(parameters);
    g_replies.push_back(std::string(name != nullptr ? name : "") + (text != nullptr ? text : "-"));
    if (g_onReply) {
        g_onReply();
    }
}

class ServicesTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        forget();
    }

    void forget() {
        g_replies.clear();
        g_onReply = nullptr;
        TAV_ServicesQuit();
        startDevice({});
    }

    static int call(const char* uri, SDL_bool oneShot, const char* name = nullptr) {
        return TAV_ServiceCallWithCallback(uri, "{}", replyFunction, const_cast<char*>(name),
                                           oneShot);
    }
};

// The C library gives a new record the address of the one that was freed last, where no sanitizer
// keeps it.
TEST_F(ServicesTest, IgnoresRepliesForRecordsThatAreGoneOrOfAnotherCall) {
    constexpr char kIgnored[] = "tav_1 userCallback ignored callback";
    device.profile.services[kUri] = {};
    call(kUri, SDL_FALSE, "first ");
    const int first = device.openCalls().front();
    TAV_ServicesQuit();
    EXPECT_THAT(device.openCalls(), ElementsAre(first)) << "quitting cancels nothing";
    trace();
    device.deliver(first, "late");
    EXPECT_THAT(trace(), testing::Contains(kIgnored));
    call(kUri, SDL_TRUE, "second ");
    trace();
    device.deliver(first, "late");
    EXPECT_THAT(trace(), testing::Contains(testing::AnyOf(
                             kIgnored, "tav_1 userCallback callback had incorrect id. Ignoring")));
    EXPECT_THAT(g_replies, IsEmpty());

    g_onReply = [] {
        g_onReply = nullptr;
        TAV_UnregisterServiceCallback(replyFunction);
        call(kUri, SDL_TRUE, "third ");
    };
    device.deliver(device.openCalls().back(), "a");
    device.deliver(device.openCalls().back(), "b");
    EXPECT_THAT(g_replies, ElementsAre("second a", "third b"));
}

void unregister() {
    TAV_UnregisterServiceCallback(replyFunction);
}

void replace() {
    unregister();
    TAV_ServiceCallWithCallback(kTicksUri, "{}", replyFunction, nullptr, SDL_FALSE);
}

// The reply function of a subscription waits for a purchase request, which delivers the reply of
// another call and further replies of the same subscription; one of those acts on the registry
// while the first one is still being handled.
TEST_F(ServicesTest, AReplyFunctionMayWaitForAPurchaseRequest) {
    const struct {
        const char* what;
        void (*act)();
        size_t openTicks;  // on the bus, in the end
        bool goesOn;
    } cases[] = {
        {"nothing", [] {}, 1, true},
        {"unregister", unregister, 0, false},
        {"quit", TAV_ServicesQuit, 1, false},
        {"replace", replace, 1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        forget();
        device.profile.services[kTicksUri] = repliesOf({"1", "2"}, 20, 20);
        device.profile.services[kUri] = repliesOf({"!"}, 30);
        device.profile.services[kItemsUri] = repliesOf({"items"}, 100);
        g_onReply = [&] {
            if (g_replies.size() == 1) {
                EXPECT_EQ(tavtest::take(TAV_GetAvailableItems()), "items");
            } else if (g_replies.size() == 3) {
                c.act();
            }
        };
        call(kTicksUri, SDL_FALSE, "tick ");
        call(kUri, SDL_TRUE, "once ");
        device.advance(20);
        ASSERT_GE(g_replies.size(), 3u);
        g_replies.resize(3);
        EXPECT_THAT(g_replies, ElementsAre("tick 1", "once !", "tick 2"));
        device.advance(200);
        EXPECT_THAT(device.openCalls(kTicksUri), SizeIs(c.openTicks));
        EXPECT_EQ(g_replies.size() > 3, c.goesOn);
    }
}

// Values of replies.

using ReplyValues = tavtest::TranscriptTest;

// Every reader at once, as text.
std::string readAll(const TAV_ServiceParameters* parameters, const char* key) {
    char text[32] = "before";
    TAV_GetParamString(parameters, key, text, sizeof text);
    std::ostringstream all;
    all << TAV_ParamExists(parameters, key) << ' ' << TAV_GetParamBool(parameters, key) << ' '
        << TAV_GetParamInt(parameters, key) << ' ' << TAV_GetParamDouble(parameters, key) << " '"
        << text << '\'';
    return all.str();
}

TEST_F(ReplyValues, AreReadInEveryType) {
    const std::string nested = std::string(2000, '[') + std::string(2000, ']');
    const std::string replies[] = {R"({"a":true,"b":false})",
                                   R"({"b":true,"a":false})",
                                   R"({"a":-72})",
                                   R"({"a":24.5})",
                                   R"({"a":2147483648})",
                                   R"({"a":"text \" é"})",
                                   R"({"a":"1"})",
                                   R"({"a":null})",
                                   R"({"a":{"b":[1,2]}})",
                                   R"({"b":1,"A":1,"c":{"a":1}})",
                                   "",
                                   "no JSON",
                                   R"({"a":1}})",
                                   "[1]",
                                   "\"a\"",
                                   nested,
                                   "{\"a\":\"\xff\"}"};
    for (const std::string& reply : replies) {
        const TAV_ServiceParameters parameters = {reply.c_str(), 0, 0};
        EXPECT_EQ(TAV_GetParamJson(&parameters), reply.c_str());
        show(reply.substr(0, 40), [&] { return readAll(&parameters, "a"); });
    }
    const TAV_ServiceParameters some = {R"({"a":"12345"})", 0, 0};
    const TAV_ServiceParameters none = {nullptr, 0, 0};
    CALL(readAll(nullptr, "a"));
    CALL(readAll(&some, nullptr));
    CALL(readAll(&none, "a"));
    CALL(TAV_GetParamJson(nullptr));
    CALL(TAV_GetParamJson(&none));
    for (const char* key : {"a", "b", static_cast<const char*>(nullptr)}) {
        for (const int length : {6, 5, 1, 0, -1}) {
            show("string of " + std::to_string(length), [&] {
                char buffer[] = "before";
                TAV_GetParamString(&some, key, buffer, length);
                return std::string(buffer);
            });
        }
    }
    TAV_GetParamString(&some, "a", nullptr, 6);
}

TEST_F(ReplyValues, AreParsedAfreshAndAtAnyLength) {
    std::string reply = R"({"pad":")" + std::string(4 << 20, 'x') + R"(","a":1})";
    const TAV_ServiceParameters parameters = {reply.data(), 0, 0};
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 1);
    reply[reply.size() - 2] = '2';
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 2);
}

}  // namespace
