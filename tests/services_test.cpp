#include "services/blocking_call.h"

#include "transcript.h"

namespace {

using tavtest::repliesOf;
using testing::IsEmpty;

constexpr char kUri[] = "vire://com.example.test/ask";
constexpr char kTicksUri[] = "vire://com.example.test/ticks";

// Blocking calls.

using BlockingCallTest = tavtest::TranscriptTest;

TEST_F(BlockingCallTest, WaitsInPassesOf50Milliseconds) {
    constexpr int kNever = 90000;  // when nobody waits any more
    const std::pair<int, int> timeoutsAndReplies[] = {
        {1, kNever}, {50, kNever},   {51, kNever},   {100, kNever}, {51, 0},
        {50, 0},     {15000, 14900}, {15000, 14901}, {0, 60010},    {-1, 60010}};
    for (const auto& one : timeoutsAndReplies) {
        startDevice({});
        device.profile.services[kUri] = repliesOf({"reply"}, one.second);
        const tav::HStringPtr reply = tav::blockingKSCall(kUri, "{}", false, one.first);
        EXPECT_THAT(device.openCalls(), IsEmpty());
        note(join(one.first, " ms, reply after ", one.second, " -> ",
                  reply != nullptr ? HString_toStr(reply.get()) : SDL_GetError(), " at ",
                  device.now()));
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
    EXPECT_THAT(trace().front(), testing::StartsWith("tav_9 blockingCallCallback 7, one, 0x"));
    device.failNth(tavsim::Fault::Allocation, 1);
    tav::blockingCallCallback(7, "three", &call);
    tav::blockingCallCallback(7, "four", &call);
    EXPECT_EQ(call.reply, nullptr);
}

// Calls with a reply function.

using ServicesTest = tavtest::EventTest;

std::vector<std::string> g_replies;

void replaceOnce(TAV_ServiceParameters* parameters, void*) {
    g_replies.emplace_back(TAV_GetParamJson(parameters));
    if (g_replies.size() == 1) {
        TAV_UnregisterServiceCallback(replaceOnce);
        TAV_ServiceCallWithCallback(kUri, "{}", replaceOnce, nullptr, SDL_TRUE);
    }
}

// Without a sanitizer, malloc gives the new record the address of the one just freed.
TEST_F(ServicesTest, AReplyFunctionMayReplaceItsOwnCall) {
    device.profile.services[kUri] = {};
    TAV_ServiceCallWithCallback(kUri, "{}", replaceOnce, nullptr, SDL_TRUE);
    device.deliver(device.openCalls().back(), "a");
    device.deliver(device.openCalls().back(), "b");
    EXPECT_THAT(g_replies, testing::ElementsAre("a", "b"));
}

// Values of replies.

using ReplyValues = tavtest::TranscriptTest;

// What every reader makes of the value, as text.
std::string readAll(const TAV_ServiceParameters* parameters, const char* key) {
    char text[32] = "before";
    TAV_GetParamString(parameters, key, text, sizeof text);
    return ReplyValues::join(TAV_ParamExists(parameters, key), ' ',
                             TAV_GetParamBool(parameters, key), ' ',
                             TAV_GetParamInt(parameters, key), ' ',
                             TAV_GetParamDouble(parameters, key), " '", text, '\'');
}

TEST_F(ReplyValues, AreReadInEveryType) {
    const std::string nested = std::string(2000, '[') + std::string(2000, ']');
    for (const std::string& reply :
         split(R"({"a":true,"b":false}|{"b":true,"a":false}|{"a":-72}|{"a":24.5}|)"
               R"({"a":-2147483648}|{"a":-2147483649}|{"a":1,"a":2}|{"a":"text \" é"}|{"a":"1"}|)"
               R"({"a":null}|{"a":{"b":[1,2]}}|{"b":1,"A":1,"c":{"a":1}}||no JSON|{"a":1}}|)"
               R"({"a":1} x|{'a':1}|{"a":01}|{"a":1e999}|[1]|"a"|)" +
               nested + "|{\"a\":\"\xff\"}")) {
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
        std::string strings;
        for (const int length : {6, 5, 1, 0, -1}) {
            char buffer[] = "before";
            TAV_GetParamString(&some, key, buffer, length);
            strings += " '" + std::string(buffer) + "'";
        }
        note(std::string("into 6, 5, 1, 0 and -1 bytes:") + strings);
    }
    TAV_GetParamString(&some, "a", nullptr, 6);
    char text[8];
    TAV_GetParamString(&none, "a", text, sizeof text);
    EXPECT_THAT(trace().back(), testing::StartsWith("tav_f")) << "no reply is no malformed one";
}

TEST_F(ReplyValues, AreParsedAfreshAndAtAnyLength) {
    std::string reply = R"({"pad":")" + std::string(4 << 20, 'x') + R"(","a":1})";
    const TAV_ServiceParameters parameters = {reply.data(), 0, 0};
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 1);
    reply[reply.size() - 2] = '2';
    EXPECT_EQ(TAV_GetParamInt(&parameters, "a"), 2);
}

}  // namespace
