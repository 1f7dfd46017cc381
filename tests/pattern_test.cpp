// Times and patterns of journal entries, as commands and scenarios write them.
#include "simulator/language/pattern.h"

#include "simulator/language/vocabulary.h"
#include "transcript.h"

namespace {

using PatternTest = tavtest::TranscriptTest;

TEST_F(PatternTest, TimesAreNumbersWithAUnit) {
    std::string times, others;
    for (const std::string& word :
         split("250ms|1.5s|2min|0s|0.6ms|.5s|4294967295ms||5|s|-1s|-0s|1 s|1e3s|1S|1.2.3s|infs|"
               "nanms|4294967296ms|1sec|+1s")) {
        const auto time = tavsim::readTime(word);
        time ? times += word + " = " + std::to_string(*time) + ", " : others += " '" + word + "'";
    }
    note(times);
    note("no times:" + others);
}

TEST_F(PatternTest, AllConditionsMustHoldForOneEntry) {
    const char* const entry =
        R"({"at":120,"kind":"bus","what":"reply","token":7,"uri":null,"reply":)"
        R"("{\"a b\":\"c:\",\"items\":[{\"price\":0.99}],\"latitude\":52.5,\"longitude\":13.4}"})";
    std::string match, others;
    for (const std::string& pattern :
         split(R"(kind=bus  what=call|kind=b?s|kind=b?|kind=|what=*e*e*|)"
               R"(reply="*a b*" kind="\u0062us" within 2s|reply="*a  b*"|reply=*:"c:"*|)"
               R"(reply.items.0.price>0.9|reply.items[1].price=*|)"
               R"(reply.items="[{\"price\":0.99}]"|reply.none=*|token<7|token<=7|at>=121|)"
               R"(uri<1|latitude>52|velocity>0|near 52.5,13.4 1m|near 52.5,13.5 25m|)"
               R"(near 52.5,13.4|near 91,0 1m||within 2s|kind|reply=a b|=bus|kind="bus|)"
               R"(kind="b\us"|kind="bus"x|kind=bus within|kind=bus within 2s what=call|token<x|)"
               R"(reply.=1|reply[x]=1|reply[1=1|token.x=1|*=x|kind=buss|what=vibrater|urii=x|)"
               R"(what=cancel uri=*|kind=sdl what=reply|what=* enable=1 uri=*)")) {
        std::string error;
        const auto awaited = tavsim::readAwaited(pattern, &error);
        if (!awaited) {
            note(pattern + " -> " + error.substr(0, error.find("known: ")));
        } else {
            (tavsim::matches(entry, awaited->pattern) ? match : others) += " | " + pattern;
        }
    }
    note("match:" + match);
    note("do not match:" + others);
    EXPECT_FALSE(tavsim::matches("[]", {{"kind", "*"}}));
    EXPECT_FALSE(tavsim::matches("{\"kind\":", {{"kind", "*"}}));
    std::string error;
    EXPECT_EQ(tavsim::readAwaited("kind=bus within 1.5s", &error)->within, 1500);
    std::string many;
    for (int n = 0; n < 33; ++n) {
        many += "at=1 ";
    }
    EXPECT_FALSE(tavsim::readAwaited(many, &error)) << "no pattern is without end";
}

// The manual's table of journal entries must match the table in the code.
TEST_F(PatternTest, TheManualHasEachFormOfEntries) {
    std::ifstream file(TAV_TESTS "/../docs/scenarios.md");
    const std::string manual(std::istreambuf_iterator<char>(file), {});
    const auto inCode = [](std::string_view list) {
        std::string text;
        for (const std::string& name : tavsim::namesIn(list)) {
            text += (text.empty() ? "`" : ", `") + name + "`";
        }
        return text;
    };
    for (const auto& [kind, whats, members] : tavsim::entryForms()) {
        const std::string row =
            join("| ", inCode(kind), " | ", inCode(whats), " | ", inCode(members), " |\n");
        EXPECT_NE(manual.find(row), std::string::npos) << row;
    }
}

}  // namespace
