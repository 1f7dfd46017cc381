// The page's side of the bridge: messages to the library, and its answers.
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "js/handlers.h"
#include "tests/device_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Parameters = std::vector<const char*>;

// Whether the answer is an exception, and its text; nothing when the message could not be read.
using Answer = std::optional<std::pair<bool, std::string>>;

Answer result(const std::string& text) {
    return {{false, text}};
}

Answer exception(const std::string& text) {
    return {{true, text}};
}

const Answer kUnknown = exception("Unknown Function");

std::string message(const std::string& name, int count, const Parameters& parameters) {
    HDataWriter writer;
    writer.writeStr(name.c_str());
    writer.writeInt(count);
    for (const char* parameter : parameters) {
        writer.writeStr(parameter);
    }
    return std::string(static_cast<const char*>(writer.bytes()), writer.size());
}

Answer send(const std::string& request) {
    HDataReader reader(request.data(), request.size());
    HDataWriter writer;
    if (!tav::jsMethodCallback(&reader, &writer)) {
        EXPECT_EQ(writer.size(), HDataWriter().size());
        return std::nullopt;
    }
    HDataReader answer(writer.bytes(), writer.size());
    const bool isException = answer.readBool();
    const std::unique_ptr<char[]> text(answer.allocReadStr());
    return {{isException, answer.isSuccessful() && text != nullptr ? text.get() : "(null)"}};
}

Answer call(const std::string& name, int count = 0, const Parameters& parameters = {}) {
    return send(message(name, count, parameters));
}

std::vector<std::string> methodNames() {
    HDataWriter writer;
    EXPECT_TRUE(tav::jsGetMethodsCallback(&writer));
    HDataReader reader(writer.bytes(), writer.size());
    std::vector<std::string> names;
    for (int left = reader.readInt(); left > 0; --left) {
        const std::unique_ptr<char[]> name(reader.allocReadStr());
        names.push_back(name != nullptr ? name.get() : "(null)");
    }
    EXPECT_TRUE(reader.isSuccessful());
    return names;
}

// Replies with the count, and with the parameters from before the first to behind the third.
void describe(TAV_JSParameters* parameters) {
    EXPECT_TRUE(parameters->count > 0 || parameters->parameters == nullptr);
    std::string seen = std::to_string(TAV_GetNumJSParams(parameters));
    for (int index = -1; index <= 3; ++index) {
        seen += std::string("|") + TAV_GetJSParamString(parameters, index);
    }
    TAV_JSReply(parameters, seen.c_str());
}

void replyOther(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, "other");
}

// Takes its parameters in pairs: what to do, and the text for it.
void answerInSteps(TAV_JSParameters* parameters) {
    for (int index = 0; index < parameters->count; index += 2) {
        const std::string step = parameters->parameters[index];
        const char* text = parameters->parameters[index + 1];
        if (step == "reply") {
            TAV_JSReply(parameters, text);
        } else if (step == "raise") {
            TAV_JSException(parameters, text);
        } else if (step == "cut") {
            TAV_JSReply(parameters, parameters->reply + 8);
        }
    }
}

class JSTest : public tavtest::DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        tav::g_jsRegistrationComplete = false;
    }

    // Entry traces alone, with P for each address.
    std::vector<std::string> entries() {
        std::vector<std::string> lines = trace();
        for (std::string& line : lines) {
            EXPECT_EQ(line.substr(0, 6), "tav_f ");
            line.erase(0, 6);
            for (size_t at = line.find("0x"); at != line.npos; at = line.find("0x")) {
                line.replace(at, line.find_first_not_of("0123456789abcdef", at + 2) - at, "P");
            }
        }
        return lines;
    }
};

TEST_F(JSTest, NamesAreUniqueAndKeepTheirPlaceAsFarAsTheyAreStored) {
    const std::string name255(255, 'a'), name256(256, 'b'), name4095(4095, 'c'), cut(4096, 'd');
    for (const std::string& name : {name255, name256, name4095, cut, cut}) {
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), describe), TAV_NOERROR);
    }
    const std::string stored(4095, 'd');
    for (const std::string& name : {stored, name255}) {
        EXPECT_EQ(TAV_RegisterJSHandler(name.c_str(), replyOther), TAV_NOERROR);
    }
    EXPECT_THAT(methodNames(), ElementsAre(name255, name256, name4095, stored, stored));
    EXPECT_EQ(call(name255), result("other"));
    EXPECT_EQ(call(name256), kUnknown);
    EXPECT_EQ(call(name4095), kUnknown);
}

TEST_F(JSTest, CallsWithoutAHandlerAreUnknown) {
    TAV_RegisterJSHandler("Method", describe);
    TAV_RegisterJSHandler("null", nullptr);
    EXPECT_EQ(TAV_RegisterJSHandler(nullptr, describe), TAV_NOERROR);
    EXPECT_THAT(methodNames(), ElementsAre("Method", "null"));
    for (const char* name : {"", "method", "Method2", "null"}) {
        EXPECT_EQ(call(name, 1, {"a"}), kUnknown) << name;
    }
}

TEST_F(JSTest, TheLastAnswerIsSent) {
    const std::pair<Parameters, Answer> cases[] = {
        {{}, result("")},
        {{"reply", "a much longer first reply", "reply", "second"}, result("second")},
        {{"raise", "no"}, exception("no")},
        {{"raise", "no", "reply", "yes"}, result("yes")},
        {{"reply", "yes", "raise", "no"}, exception("no")},
        {{"reply", "yes", "reply", nullptr}, result("")},
        {{"raise", nullptr}, exception("")},
        {{"reply", "its own part", "cut", ""}, result("part")},
    };
    TAV_RegisterJSHandler("answer", answerInSteps);
    for (const auto& [steps, answer] : cases) {
        EXPECT_EQ(call("answer", static_cast<int>(steps.size()), steps), answer);
    }
}

TEST_F(JSTest, TheCountIsTheSentOneAndWhatWasNotSentIsEmpty) {
    const struct {
        int count;
        Parameters sent;
        const char* seen;
    } cases[] = {
        {2, {"a", "b"}, "2||a|b||"},
        {0, {"a"}, "0|||||"},
        {-1, {"a"}, "-1|||||"},
        {1, {"a", "b"}, "1||a|||"},
        {3, {"a"}, "3||a|||"},
        {std::numeric_limits<int>::max(), {"a", "b"}, "2147483647||a|b||"},
        {3, {"a", nullptr, "c"}, "3||a||c|"},
    };
    TAV_RegisterJSHandler("describe", describe);
    for (const auto& one : cases) {
        EXPECT_EQ(call("describe", one.count, one.sent), result(one.seen)) << one.count;
    }
}

TEST_F(JSTest, ReadsNumbersAsFarAsTheyGo) {
    const std::pair<const char*, const char*> cases[] = {
        {"12abc", "0 12 0, 0 12 0"},
        {"0x10", "0 0 0, 0 16 0"},
        {"1e2", "0 1 0, 0 100 0"},
        {" -7.5", "0 -7 0, 0 -7.5 0"},
        {"abc", "0 0 0, 0 0 0"},
        {nullptr, "0 0 0, 0 0 0"},
        {"2147483648", "0 2147483647 0, 0 2147483648 0"},
        {"-99999999999999999999", "0 -2147483648 0, 0 -1e+20 0"},
    };
    TAV_RegisterJSHandler("numbers", [](TAV_JSParameters* p) {
        char text[100];
        std::snprintf(text, sizeof text, "%d %d %d, %.10g %.10g %.10g", TAV_GetJSParamInt(p, -1),
                      TAV_GetJSParamInt(p, 0), TAV_GetJSParamInt(p, 1), TAV_GetJSParamDouble(p, -1),
                      TAV_GetJSParamDouble(p, 0), TAV_GetJSParamDouble(p, 1));
        TAV_JSReply(p, text);
    });
    for (const auto& [text, numbers] : cases) {
        EXPECT_EQ(call("numbers", 1, {text, "5"}), result(numbers));
    }
}

TEST_F(JSTest, AFailedReadLeavesOutWhatFollows) {
    TAV_RegisterJSHandler("describe", describe);
    const Answer answers[] = {std::nullopt, result("0|||||"), result("2|||||"), result("2||a|||")};
    const std::string whole = message("describe", 2, {"a", "b"});
    for (int read = 1; read <= 4; ++read) {
        device.failNth(sim::Fault::Read, read);
        EXPECT_EQ(send(whole), answers[read - 1]) << read;
    }
    std::vector<Answer> seen;
    for (size_t size = 0; size < whole.size(); ++size) {
        const Answer answer = send(whole.substr(0, size));
        if (seen.empty() || seen.back() != answer) {
            seen.push_back(answer);
        }
    }
    EXPECT_THAT(seen, testing::ElementsAreArray(answers));
}

TEST_F(JSTest, AHandlerMayChangeTheRegistryWhileItRuns) {
    TAV_RegisterJSHandler("replace", [](TAV_JSParameters* p) {
        TAV_RegisterJSHandler("replace", replyOther);
        for (int index = 0; index < 100; ++index) {
            TAV_RegisterJSHandler(std::to_string(index).c_str(), replyOther);
        }
        TAV_JSReply(p, TAV_GetJSParamString(p, 0));
    });
    EXPECT_EQ(call("replace", 1, {"replaced"}), result("replaced"));
    EXPECT_EQ(call("replace"), result("other"));
    EXPECT_EQ(call("99"), result("other"));

    TAV_RegisterJSHandler("quit", [](TAV_JSParameters* p) {
        TAV_JSException(p, "not sent");
        TAV_Quit();
        TAV_RegisterJSHandler("after", describe);
        EXPECT_EQ(call("after", 1, {"a"}), result("1||a|||"));
        TAV_JSReply(p, TAV_GetJSParamString(p, 0));
    });
    EXPECT_EQ(call("quit", 1, {"bye"}), result("bye"));
    EXPECT_THAT(methodNames(), ElementsAre("after"));
    EXPECT_EQ(call("quit"), kUnknown);
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
    call("m", 1, {"1"});
    call("n");
    methodNames();
    TAV_JSQuit();
    EXPECT_THAT(
        entries(),
        ElementsAre("TAV_RegisterJSHandler m, P", "jsMethodCallback P, P", "TAV_JSReply P, ",
                    "TAV_GetNumJSParams P", "TAV_GetJSParamString P, -1", "TAV_GetJSParamInt P, 0",
                    "TAV_GetJSParamDouble P, 7", "TAV_JSException P, no", "TAV_JSReply P, no",
                    "jsMethodCallback P, P", "TAV_JSException P, Unknown Function",
                    "TAV_JSReply P, Unknown Function", "jsGetMethodsCallback P", "TAV_JSQuit --"));
    EXPECT_THAT(methodNames(), IsEmpty());
}

TEST_F(JSTest, CallsIntoThePageNeedAPluginAndARegistration) {
    Parameters arguments = {"a", nullptr};
    EXPECT_EQ(TAV_JSRegistrationComplete(), TAV_ECONNECTION);
    expectFailure("TAV_JSRegistrationComplete",
                  "Could not register JS Handlers. Either this was not launched as a plugin, or "
                  "the IPC is not yet set up.");
    for (const bool isComplete : {true, false}) {
        tav::g_jsRegistrationComplete = isComplete;
        EXPECT_EQ(TAV_CallJS("f", arguments.data(), 1), TAV_ECONNECTION);
        expectFailure("TAV_CallJS", "TAV_CallJS only functions in Plug-in components");
    }

    device.profile.plugin = true;
    EXPECT_EQ(TAV_CallJS("f", arguments.data(), 1), TAV_UNINIT);
    expectFailure("TAV_CallJS",
                  "You must call TAV_JSRegistrationComplete before calling TAV_CallJS");

    EXPECT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
    TAV_JSQuit();
    EXPECT_THAT(entries(), ElementsAre("TAV_JSRegistrationComplete --", "TAV_JSQuit --"));
    EXPECT_EQ(TAV_CallJS("f", arguments.data(), 0), TAV_NOERROR);
    EXPECT_EQ(TAV_CallJS("f", arguments.data(), 2), TAV_NOERROR);
    EXPECT_THAT(entries(), ElementsAre("TAV_CallJS f, P, 0", "TAV_IsPlugin --",
                                       "TAV_CallJS f, P, 2", "TAV_IsPlugin --"));
    EXPECT_EQ(TAV_CallJS("f", arguments.data(), -1), TAV_ECONNECTION);
    expectFailure("TAV_CallJS", "Unable to dispatch message");
}

}  // namespace
