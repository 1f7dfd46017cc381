// The JavaScript bridge from the library's side.
#include <limits>

#include "bridge.h"
#include "transcript.h"

namespace {

using tavtest::callMethod;

using Parameters = std::vector<const char*>;

std::string answerText(const tavtest::Answer& answer) {
    return !answer ? "unread" : (answer->first ? "exception " : "") + answer->second;
}

// Replies with the count and the parameters, from an index before the first to a fourth.
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

class JSTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        tav::g_jsRegistrationComplete = false;
    }

    void page(const std::string& name, int count = 0, const Parameters& parameters = {}) {
        show("page calls " + name.substr(0, 20) + " " + std::to_string(count),
             [&] { return answerText(callMethod(name, count, parameters)); });
    }
};

TEST_F(JSTest, Parameters) {
    constexpr int kMost = std::numeric_limits<int>::max();
    const std::pair<int, Parameters> calls[] = {{-1, {"a"}},
                                                {3, {"a"}},
                                                {kMost, {"a", "b"}},
                                                {33, Parameters(33, "a")},
                                                {3, {"a", nullptr, "c"}}};
    TAV_RegisterJSHandler("describe", describe);
    for (const auto& [count, sent] : calls) {
        page("describe", count, sent);
    }
    for (int read = 1; read <= 4; ++read) {
        device.failNth(tavsim::Fault::Read, read);
        page("describe", 2, {"a", "b"});
    }
    TAV_RegisterJSHandler("numbers", [](TAV_JSParameters* p) {
        std::ostringstream text;
        text.precision(10);
        for (const int index : {-1, 0, 1}) {
            text << TAV_GetJSParamInt(p, index) << ' ' << TAV_GetJSParamDouble(p, index) << ", ";
        }
        TAV_JSReply(p, text.str().c_str());
    });
    for (const char* text : {"12abc", "0x10", "1e2", " -7.5", "abc", "2147483648",
                             "-99999999999999999999", static_cast<const char*>(nullptr)}) {
        show(text != nullptr ? text : "null", [&] {
            return answerText(callMethod("numbers", 1, {text, "5"}));
        });
    }

    // A record that the application has made itself.
    char text[] = "7";
    char* texts[] = {text, nullptr};
    TAV_JSParameters own = {2, texts, nullptr, 0};
    CALL(describe(&own));
    CALL(std::string(own.reply));
    own.parameters = nullptr;
    CALL(TAV_JSReply(&own, TAV_GetJSParamString(&own, 0)));
    CALL(std::string(own.reply));
    delete[] own.reply;
}

TEST_F(JSTest, Answers) {
    TAV_RegisterJSHandler("piece", [](TAV_JSParameters* p) {
        TAV_JSReply(p, "its own piece");
        TAV_JSReply(p, p->reply + 8);
    });
    page("piece");
    CALL(TAV_RegisterJSHandler("null", nullptr));
    CALL(TAV_RegisterJSHandler(nullptr, describe));
    page("null");
    CALL(TAV_GetNumJSParams(nullptr));
    CALL(TAV_GetJSParamString(nullptr, 0));
    CALL(TAV_GetJSParamInt(nullptr, 0));
    CALL(TAV_GetJSParamDouble(nullptr, 0));
    CALL(TAV_JSReply(nullptr, "a"));
    CALL(TAV_JSException(nullptr, "a"));
    CALL(TAV_JSQuit());
    CALL(tavtest::methodNames().size());
}

TEST_F(JSTest, CallsIntoThePageNeedAPluginAndARegistration) {
    const char* arguments[] = {"a", nullptr};
    CALL(TAV_JSRegistrationComplete());
    for (const bool isComplete : {true, false}) {
        tav::g_jsRegistrationComplete = isComplete;
        CALL(TAV_CallJS("f", arguments, 1));
    }
    device.profile.plugin = true;
    CALL(TAV_CallJS("f", arguments, 1));
    CALL(TAV_JSRegistrationComplete());
    CALL(TAV_JSQuit());
    CALL(TAV_CallJS("f", arguments, 0));
    CALL(TAV_CallJS("f", arguments, 2));
    CALL(TAV_CallJS("f", arguments, -1));
}

}  // namespace
