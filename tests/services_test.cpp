#include "services/service_calls.h"

#include <cstdio>
#include <functional>
#include <sstream>

#include "device_test.h"
#include "services.h"
#include "services/blocking_call.h"

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
constexpr int kNever = -1;

// Blocking calls.

class BlockingCallTest : public tavtest::EventTest {
protected:
    void answerAfter(int delay) {
        device.profile.services[kUri] = {};
        if (delay != kNever) {
            device.profile.services[kUri] = repliesOf({"reply"}, delay);
        }
    }
};

TEST_F(BlockingCallTest, WaitsInPassesOf50Milliseconds) {
    struct Case {
        int timeoutMs;
        int replyAfter;
        bool answered;
        long endsAt;
    };
    const Case cases[] = {
        {1, kNever, false, 50},      {50, kNever, false, 50},       {51, kNever, false, 100},
        {100, kNever, false, 100},   {15000, kNever, false, 15000}, {51, 0, true, 50},
        {50, 0, false, 50},  // comes in the last pass, which nobody looks at
        {15000, 14900, true, 14950}, {15000, 14901, false, 15000},  {0, 60010, true, 60100},
        {-1, 60010, true, 60100}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.timeoutMs << " ms, reply after " << c.replyAfter);
        startDevice({});
        answerAfter(c.replyAfter);
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
    answerAfter(100);
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
    device.failNth(sim::Fault::StringAllocation, 1);
    tav::blockingCallCallback(7, "three", &call);
    tav::blockingCallCallback(7, "four", &call);
    EXPECT_EQ(call.reply, nullptr);
}

// Calls with a reply function.

std::vector<std::string> g_replies;
std::function<void()> g_onReply;

void otherFunction(TAV_ServiceParameters*, void*) {
    g_replies.push_back("other");
}

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

    void TearDown() override {
        forget();
        EventTest::TearDown();
    }

    // A device whose services answer only what a test delivers.
    void forget() {
        g_replies.clear();
        g_onReply = nullptr;
        TAV_ServicesQuit();
        startDevice({});
        device.profile.services[kUri] = {};
        device.profile.services[kTicksUri] = {};
    }

    static int call(const char* uri, SDL_bool oneShot, const char* name = nullptr) {
        return TAV_ServiceCallWithCallback(uri, "{}", replyFunction, const_cast<char*>(name),
                                           oneShot);
    }

    // Unregistering cancels what is registered, and the journal shows each cancellation.
    bool hasRecords() const {
        const size_t before = device.journal().size();
        TAV_UnregisterServiceCallback(replyFunction);
        return device.journal().size() != before;
    }

    void answerAll(const char* reply) {
        for (const int token : device.openCalls()) {
            device.deliver(token, reply);
        }
    }
};

TEST_F(ServicesTest, AOneShotCallIsAnsweredOnceAndASubscriptionUntilItIsUnregistered) {
    device.profile.services[kUri].replies = {"1"};
    device.profile.services[kTicksUri] = repliesOf({"a", "b", {}}, 0, 100);
    EXPECT_EQ(call(kUri, SDL_TRUE, "once "), TAV_NOERROR);
    EXPECT_EQ(call(kTicksUri, SDL_FALSE, "tick "), TAV_NOERROR);
    device.advance(250);
    EXPECT_THAT(g_replies, ElementsAre("once 1", "tick a", "tick b", "tick -"));
    EXPECT_THAT(device.openCalls(), SizeIs(1));
    EXPECT_EQ(TAV_UnregisterServiceCallback(replyFunction), TAV_NOERROR);
    EXPECT_THAT(device.openCalls(), IsEmpty());
    device.advance(1000);
    EXPECT_THAT(g_replies, SizeIs(4));
    EXPECT_EQ(tavtest::optionsSent(device), std::set{false});
}

TEST_F(ServicesTest, SendsAndTracesWhatItIsGiven) {
    Requests requests;
    device.profile.services[kUri] = tavtest::keepingService(requests);
    EXPECT_EQ(TAV_ServiceCall(kUri, "{\"no JSON"), TAV_NOERROR);
    EXPECT_THAT(requests, ElementsAre(tavtest::Request{kUri, "{\"no JSON"}));
    EXPECT_THAT(device.openCalls(), IsEmpty());
    EXPECT_EQ(tavtest::optionsSent(device), std::set{false});
    const std::string texts = std::string(kUri) + ", {\"no JSON";
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_ServiceCall " + texts,
                                     AllOf(StartsWith("tav_f TAV_ServiceCallWithCallback " + texts),
                                           EndsWith(", true"))));
    const SDL_bool oneShot = tavtest::anyValue<SDL_bool>(-2);
    TAV_ServiceCallWithCallback(nullptr, nullptr, replyFunction, nullptr, oneShot);
    EXPECT_THAT(trace(), ElementsAre(AllOf(HasSubstr(" (null), (null), 0x"), EndsWith(", true")),
                                     "tav_f UserCallbackContext --"));
    device.advance(0);
    EXPECT_THAT(g_replies, SizeIs(1));
    EXPECT_THAT(device.openCalls(), IsEmpty());
    EXPECT_FALSE(hasRecords());
}

TEST_F(ServicesTest, ARefusedDispatchLeavesNoCall) {
    device.profile.services[kUri].refuse = true;
    const auto refuses = [&](int result) {
        EXPECT_EQ(result, TAV_ECONNECTION);
        expectFailure("TAV_ServiceCallWithCallback", "Unable to dispatch service call");
    };
    refuses(TAV_ServiceCall(kUri, "{}"));
    refuses(TAV_ServiceCallWithCallback(kUri, "{}", nullptr, nullptr, SDL_FALSE));
    refuses(call(kUri, SDL_TRUE));
    refuses(call(kUri, SDL_FALSE));
    EXPECT_FALSE(hasRecords());
}

TEST_F(ServicesTest, UnregistersEveryCallOfTheFunctionAndNoOther) {
    call(kUri, SDL_FALSE, "a");
    call(kUri, SDL_FALSE, "b");
    TAV_ServiceCallWithCallback(kTicksUri, "{}", otherFunction, nullptr, SDL_FALSE);
    call(kUri, SDL_TRUE, "c");
    call(kUri, SDL_TRUE, "d");
    EXPECT_EQ(TAV_UnregisterServiceCallback(nullptr), TAV_NOERROR);
    EXPECT_THAT(device.openCalls(), SizeIs(5));
    EXPECT_EQ(TAV_UnregisterServiceCallback(replyFunction), TAV_NOERROR);
    EXPECT_THAT(device.openCalls(kUri), IsEmpty());
    answerAll("{}");
    EXPECT_THAT(g_replies, ElementsAre("other"));
}

TEST_F(ServicesTest, IgnoresRepliesForRecordsThatAreGoneOrOfAnotherCall) {
    call(kUri, SDL_FALSE);
    const int token = device.openCalls().front();
    trace();
    device.deliver(token, "{}");
    void* record = nullptr;
    ASSERT_EQ(std::sscanf(trace().front().c_str(), "tav_f userCallback %p", &record), 1);
    tav::userCallback(token + 1, "{}", record);
    EXPECT_THAT(trace(),
                testing::Contains("tav_1 userCallback callback had incorrect id. Ignoring"));

    TAV_ServicesQuit();
    EXPECT_THAT(device.openCalls(), ElementsAre(token)) << "quitting cancels nothing";
    trace();
    device.deliver(token, "{}");
    EXPECT_THAT(trace(), testing::Contains("tav_1 userCallback ignored callback"));
    EXPECT_THAT(g_replies, SizeIs(1));
}

void unregister() {
    TAV_UnregisterServiceCallback(replyFunction);
}

const char* g_uri = kUri;
SDL_bool g_oneShot = SDL_TRUE;

void callAgain() {
    TAV_ServiceCallWithCallback(g_uri, "{}", replyFunction, const_cast<char*>("again "), g_oneShot);
}

void replace() {
    unregister();
    callAgain();
}

void startOver() {
    TAV_ServicesQuit();
    callAgain();
}

// What a reply function does while it handles its first reply; then every open call is answered
// once more.
TEST_F(ServicesTest, AReplyFunctionMayChangeTheRegistry) {
    using Replies = std::vector<std::string>;
    struct Case {
        const char* what;
        void (*act)();
        Replies oneShot;
        Replies subscription;
        size_t openSubscriptions;  // on the bus, in the end
    };
    const Case cases[] = {
        {"unregister", unregister, {"1"}, {"1"}, 0},
        {"quit", TAV_ServicesQuit, {"1"}, {"1"}, 1},
        {"call again", callAgain, {"1", "again 2"}, {"1", "2", "again 2"}, 2},
        {"replace", replace, {"1", "again 2"}, {"1", "again 2"}, 1},
        {"start over", startOver, {"1", "again 2"}, {"1", "again 2"}, 2},
    };
    for (const Case& c : cases) {
        for (const SDL_bool flag : {SDL_TRUE, SDL_FALSE}) {
            SCOPED_TRACE(testing::Message() << c.what << (flag ? ", one-shot" : ", subscription"));
            forget();
            g_uri = kUri;
            g_oneShot = flag;
            g_onReply = [&c] {
                g_onReply = nullptr;
                c.act();
            };
            call(kUri, flag);
            answerAll("1");
            answerAll("2");
            EXPECT_EQ(g_replies, flag ? c.oneShot : c.subscription);
            EXPECT_THAT(device.openCalls(), SizeIs(flag ? 0 : c.openSubscriptions));
        }
    }
}

// The reply function of a subscription waits for a purchase request, which delivers the reply of
// another call and further replies of the same subscription; one of those acts on the registry
// while the first one is still being handled.
TEST_F(ServicesTest, AReplyFunctionMayWaitForAPurchaseRequest) {
    struct Case {
        const char* what;
        void (*act)();
        size_t openTicks;  // on the bus, in the end
        bool goesOn;
    };
    const Case cases[] = {
        {"nothing", [] {}, 1, true},
        {"unregister", unregister, 0, false},
        {"quit", TAV_ServicesQuit, 1, false},
        {"replace", replace, 1, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        forget();
        device.profile.services[kTicksUri] = repliesOf({"1", "2"}, 20, 20);
        device.profile.services[kUri] = repliesOf({"!"}, 30);
        device.profile.services[kItemsUri] = repliesOf({"items"}, 100);
        g_uri = kTicksUri;
        g_oneShot = SDL_FALSE;
        bool bought = false;
        g_onReply = [&] {
            if (g_replies.size() == 1) {
                TAV_ItemCollection* items = TAV_GetAvailableItems();
                bought = items != nullptr;
                TAV_FreeItemCollection(items);
            } else if (g_replies.size() == 3) {
                c.act();
            }
        };
        call(kTicksUri, SDL_FALSE, "tick ");
        call(kUri, SDL_TRUE, "once ");
        device.advance(20);
        EXPECT_TRUE(bought);
        ASSERT_GE(g_replies.size(), 3u);
        g_replies.resize(3);
        EXPECT_THAT(g_replies, ElementsAre("tick 1", "once !", "tick 2"));
        device.advance(200);
        EXPECT_THAT(device.openCalls(kTicksUri), SizeIs(c.openTicks));
        EXPECT_EQ(g_replies.size() > 3, c.goesOn);
    }
}

// Values of replies.

class ReplyValues : public tavtest::DeviceTest {
protected:
    // Every reader at once, as text.
    static std::string readAll(const TAV_ServiceParameters* parameters, const char* key) {
        char text[32] = "before";
        TAV_GetParamString(parameters, key, text, sizeof text);
        std::ostringstream all;
        all << TAV_ParamExists(parameters, key) << ' ' << TAV_GetParamBool(parameters, key) << ' '
            << TAV_GetParamInt(parameters, key) << ' ' << TAV_GetParamDouble(parameters, key)
            << " '" << text << '\'';
        return all.str();
    }
};

TEST_F(ReplyValues, AreReadInEveryType) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"a":true,"b":false})", "1 1 0 0 'true'"},
        {R"({"b":true,"a":false})", "1 0 0 0 'false'"},
        {R"({"a":-72})", "1 0 -72 -72 '-72'"},
        {R"({"a":24.5})", "1 0 24 24.5 '24.5'"},
        {R"({"a":2147483648})", "1 0 0 2.14748e+09 '2147483648'"},
        {R"({"a":"text \" é"})", "1 0 0 0 'text \" é'"},
        {R"({"a":"1"})", "1 0 0 0 '1'"},
        {R"({"a":null})", "1 0 0 0 'null'"},
        {R"({"a":{"b":[1,2]}})", R"(1 0 0 0 '{"b":[1,2]}')"},
        {R"({"b":1,"A":1,"c":{"a":1}})", "0 0 0 0 ''"},
    };
    for (const auto& [reply, values] : cases) {
        const TAV_ServiceParameters parameters = {reply, 0, 0};
        EXPECT_EQ(readAll(&parameters, "a"), values) << reply;
        EXPECT_EQ(TAV_GetParamJson(&parameters), reply);
    }
}

TEST_F(ReplyValues, AreNeutralWhereNoneCanBeRead) {
    const std::string nested = std::string(5000, '[') + std::string(5000, ']');
    const std::string replies[] = {"",
                                   " ",
                                   "a",
                                   "no JSON",
                                   R"({"a":1)",
                                   R"({"a":1}})",
                                   R"({"a":)",
                                   "[1]",
                                   "7",
                                   "\"a\"",
                                   nested,
                                   "{\"a\":\"\xff\"}",
                                   R"({"a":"\ud800"})",
                                   R"({"b":)" + nested + "}"};
    for (const std::string& reply : replies) {
        const TAV_ServiceParameters parameters = {reply.c_str(), 0, 0};
        EXPECT_EQ(readAll(&parameters, "a"), "0 0 0 0 ''") << reply.substr(0, 40);
    }
    const TAV_ServiceParameters some = {R"({"a":1})", 0, 0};
    const TAV_ServiceParameters none = {nullptr, 0, 0};
    EXPECT_EQ(readAll(nullptr, "a"), "0 0 0 0 'before'");
    EXPECT_EQ(readAll(&some, nullptr), "0 0 0 0 ''");
    EXPECT_EQ(readAll(&none, "a"), "0 0 0 0 ''");
    EXPECT_EQ(TAV_GetParamJson(nullptr), nullptr);
    EXPECT_EQ(TAV_GetParamJson(&none), nullptr);
    EXPECT_STREQ(SDL_GetError(), "");
}

TEST_F(ReplyValues, AreParsedAfreshAndAtAnyLength) {
    std::string reply = R"({"pad":")" + std::string(4 << 20, 'x') + R"(","a":1})";
    const TAV_ServiceParameters parameters = {reply.data(), 0, 0};
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 1);
    reply[reply.size() - 2] = '2';
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 2);
}

TEST_F(ReplyValues, AStringThatDoesNotFitLeavesTheBufferEmpty) {
    const TAV_ServiceParameters some = {R"({"a":"12345"})", 0, 0};
    const TAV_ServiceParameters none = {nullptr, 0, 0};
    const std::vector<std::string> tooSmall = {"tav_1 TAV_GetParamString string too small"};
    const std::vector<std::string> unparsed = {"tav_1 TAV_GetParamString couldn't parse"};
    struct Case {
        const TAV_ServiceParameters* parameters;
        const char* key;
        int length;
        const char* result;
        std::vector<std::string> notices;  // the trace after the entry
    };
    const Case cases[] = {{&some, "a", 6, "12345", {}},      {&some, "a", 5, "", tooSmall},
                          {&some, "a", 1, "", tooSmall},     {&some, "a", 0, "before", {}},
                          {&some, "a", -1, "before", {}},    {&some, "b", 6, "", unparsed},
                          {&some, nullptr, 6, "", unparsed}, {&none, "a", 6, "", {}},
                          {nullptr, "a", 6, "before", {}}};
    for (const Case& c : cases) {
        char buffer[] = "before";
        TAV_GetParamString(c.parameters, c.key, buffer, c.length);
        EXPECT_STREQ(buffer, c.result);
        std::vector<std::string> lines = trace();
        EXPECT_THAT(lines.front(), StartsWith("tav_f TAV_GetParamString "));
        lines.erase(lines.begin());
        EXPECT_EQ(lines, c.notices);
    }
    TAV_GetParamString(&some, "a", nullptr, 6);
}

}  // namespace
