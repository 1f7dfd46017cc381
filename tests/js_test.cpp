// The bridge from the library's side.
#include <limits>
#include <regex>

#include "bridge.h"
#include "device_test.h"

namespace {

using tavtest::Answer;
using tavtest::callMethod;
using tavtest::exception;
using tavtest::methodNames;
using tavtest::result;
using testing::ElementsAre;
using testing::IsEmpty;

using Parameters = std::vector<const char*>;

const Answer kUnknown = exception("Unknown Function");

// Replies with the count, and with the parameters from before the first to behind the third.
void describe(TAV_JSParameters* parameters) {
    EXPECT_TRUE(parameters->count > 0 || parameters->parameters == nullptr);
    for (int index = 0; index < parameters->count; ++index) {
        const char* text = parameters->parameters[index];
        EXPECT_STREQ(TAV_GetJSParamString(parameters, index), text != nullptr ? text : "");
    }
    std::string seen = std::to_string(TAV_GetNumJSParams(parameters));
    for (int index = -1; index <= 3; ++index) {
        seen += std::string("|") + TAV_GetJSParamString(parameters, index);
    }
    TAV_JSReply(parameters, seen.c_str());
}

void replyOther(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, "other");
}

class JSTest : public tavtest::DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        tav::g_jsRegistrationComplete = false;
    }

    // The trace, with P for each address.
    std::vector<std::string> traceWithoutAddresses() {
        std::vector<std::string> lines = trace();
        for (std::string& line : lines) {
            line = std::regex_replace(line, std::regex("0x[0-9a-f]+"), "P");
        }
        return lines;
    }
};

TEST_F(JSTest, NamesAreUniqueAndKeepTheirPlaceAsFarAsTheyAreStored) {
    const std::string name255(255, 'a'), name256(256, 'b'), cut(4096, 'd'), stored(4095, 'd');
    for (const std::string& name : {name255, name256, cut, cut}) {
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), describe), TAV_NOERROR);
    }
    for (const std::string& name : {stored, name255}) {
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), replyOther), TAV_NOERROR);
    }
    EXPECT_EQ(TAV_RegisterJSHandler("null", nullptr), TAV_NOERROR);
    EXPECT_EQ(TAV_RegisterJSHandler(nullptr, describe), TAV_NOERROR);
    EXPECT_THAT(methodNames(), ElementsAre(name255, name256, stored, stored, "null"));
    EXPECT_EQ(callMethod(name255), result("other"));
    EXPECT_EQ(callMethod(name255 + "cut off"), result("other"));
    for (const std::string& name : {name256, stored, std::string(255, 'A'), std::string("null")}) {
        EXPECT_EQ(callMethod(name, 1, {"a"}), kUnknown) << name;
    }
}

TEST_F(JSTest, AnAnswerMayBePartOfTheOneBefore) {
    TAV_RegisterJSHandler("part", [](TAV_JSParameters* p) {
        TAV_JSReply(p, "its own part");
        TAV_JSReply(p, p->reply + 8);
    });
    EXPECT_EQ(callMethod("part"), result("part"));
}

TEST_F(JSTest, TheCountIsThatOfTheParametersThatArrived) {
    const struct {
        int count;
        Parameters sent;
        const char* seen;
    } cases[] = {
        {2, {"a", "b"}, "2||a|b||"},
        {0, {"a"}, "0|||||"},
        {-1, {"a"}, "-1|||||"},
        {1, {"a", "b"}, "1||a|||"},
        {3, {"a"}, "1||a|||"},
        {3, {}, "0|||||"},
        {std::numeric_limits<int>::max(), {"a", "b"}, "2||a|b||"},
        {9, Parameters(9, "a"), "9||a|a|a|a"},
        {3, {"a", nullptr, "c"}, "3||a||c|"},
    };
    TAV_RegisterJSHandler("describe", describe);
    for (const auto& one : cases) {
        EXPECT_EQ(callMethod("describe", one.count, one.sent), result(one.seen)) << one.count;
    }

    // A record of the application's own.
    char text[] = "7";
    char* texts[] = {text, nullptr};
    TAV_JSParameters own = {2, texts, nullptr, 0};
    describe(&own);
    EXPECT_STREQ(own.reply, "2||7|||");
    own.parameters = nullptr;
    TAV_JSReply(&own, TAV_GetJSParamString(&own, 0));
    EXPECT_STREQ(own.reply, "");
    delete[] own.reply;
}

TEST_F(JSTest, ReadsNumbersAsFarAsTheyGo) {
    const std::pair<const char*, const char*> cases[] = {
        {"12abc", "12 12"},
        {"0x10", "0 16"},
        {"1e2", "1 100"},
        {" -7.5", "-7 -7.5"},
        {"abc", "0 0"},
        {nullptr, "0 0"},
        {"2147483648", "2147483647 2147483648"},
        {"-99999999999999999999", "-2147483648 -1e+20"},
    };
    TAV_RegisterJSHandler("numbers", [](TAV_JSParameters* p) {
        char text[100];
        std::snprintf(text, sizeof text, "%d %.10g", TAV_GetJSParamInt(p, 0),
                      TAV_GetJSParamDouble(p, 0));
        TAV_JSReply(p, text);
        for (const int index : {-1, 1}) {
            EXPECT_EQ(TAV_GetJSParamInt(p, index), 0);
            EXPECT_EQ(TAV_GetJSParamDouble(p, index), 0.0);
        }
    });
    for (const auto& [text, numbers] : cases) {
        EXPECT_EQ(callMethod("numbers", 1, {text, "5"}), result(numbers));
    }
}

TEST_F(JSTest, AFailedReadLeavesOutWhatFollows) {
    TAV_RegisterJSHandler("describe", describe);
    const Answer answers[] = {std::nullopt, result("0|||||"), result("0|||||"), result("1||a|||")};
    for (int read = 1; read <= 4; ++read) {
        device.failNth(tavsim::Fault::Read, read);
        EXPECT_EQ(callMethod("describe", 2, {"a", "b"}), answers[read - 1]) << read;
    }
}

TEST_F(JSTest, NullHandlesAreHarmless) {
    EXPECT_EQ(TAV_GetNumJSParams(nullptr), 0);
    EXPECT_STREQ(TAV_GetJSParamString(nullptr, 0), "");
    EXPECT_EQ(TAV_GetJSParamInt(nullptr, 0), 0);
    EXPECT_EQ(TAV_GetJSParamDouble(nullptr, 0), 0.0);
    EXPECT_EQ(TAV_JSReply(nullptr, "a"), TAV_NOERROR);
    EXPECT_EQ(TAV_JSException(nullptr, "a"), TAV_NOERROR);
}

TEST_F(JSTest, TracesEachFunction) {
    TAV_RegisterJSHandler("m", [](TAV_JSParameters* p) {
        TAV_GetNumJSParams(p);
        TAV_GetJSParamString(p, -1);
        TAV_GetJSParamInt(p, 0);
        TAV_GetJSParamDouble(p, 7);
        TAV_JSException(p, "no");
    });
    callMethod("m", 1, {"1"});
    callMethod("n");
    methodNames();
    TAV_JSQuit();
    EXPECT_THAT(traceWithoutAddresses(),
                ElementsAre("tav_f TAV_RegisterJSHandler m, P", "tav_f jsMethodCallback P, P",
                            "tav_f TAV_JSReply P, ", "tav_f TAV_GetNumJSParams P",
                            "tav_f TAV_GetJSParamString P, -1", "tav_f TAV_GetJSParamInt P, 0",
                            "tav_f TAV_GetJSParamDouble P, 7", "tav_f TAV_JSException P, no",
                            "tav_f TAV_JSReply P, no", "tav_f jsMethodCallback P, P",
                            "tav_f TAV_JSException P, Unknown Function",
                            "tav_f TAV_JSReply P, Unknown Function", "tav_f jsGetMethodsCallback P",
                            "tav_f TAV_JSQuit --"));
    EXPECT_THAT(methodNames(), IsEmpty());
}

TEST_F(JSTest, CallsIntoThePageNeedAPluginAndARegistration) {
    const auto refuses = [&](int code, int expected, const char* function, const char* message) {
        EXPECT_EQ(code, expected);
        expectFailure(function, message);
    };
    const char* arguments[] = {"a", nullptr};
    refuses(TAV_JSRegistrationComplete(), TAV_ECONNECTION, "TAV_JSRegistrationComplete",
            "Could not register JS Handlers. Either this was not launched as a plugin, or the IPC "
            "is not yet set up.");
    for (const bool isComplete : {true, false}) {
        tav::g_jsRegistrationComplete = isComplete;
        refuses(TAV_CallJS("f", arguments, 1), TAV_ECONNECTION, "TAV_CallJS",
                "TAV_CallJS only functions in Plug-in components");
    }
    device.profile.plugin = true;
    refuses(TAV_CallJS("f", arguments, 1), TAV_UNINIT, "TAV_CallJS",
            "You must call TAV_JSRegistrationComplete before calling TAV_CallJS");

    EXPECT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
    TAV_JSQuit();
    EXPECT_EQ(TAV_CallJS("f", arguments, 0), TAV_NOERROR);
    EXPECT_EQ(TAV_CallJS("f", arguments, 2), TAV_NOERROR);
    EXPECT_THAT(traceWithoutAddresses(),
                ElementsAre("tav_f TAV_JSRegistrationComplete --", "tav_f TAV_JSQuit --",
                            "tav_f TAV_CallJS f, P, 0", "tav_f TAV_IsPlugin --",
                            "tav_f TAV_CallJS f, P, 2", "tav_f TAV_IsPlugin --"));
    refuses(TAV_CallJS("f", arguments, -1), TAV_ECONNECTION, "TAV_CallJS",
            "Unable to dispatch message");
}

}  // namespace
