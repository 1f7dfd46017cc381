// Times and patterns of journal entries, as commands and scenarios write them.
#include "simulator/control/pattern.h"

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

TEST_F(PatternTest, AllMembersMustMatchOneEntry) {
    const char* const entry =
        R"({"at":120,"kind":"bus","what":"reply","payload":"{\"a b\":\"c:\"}","option":false,)"
        R"("names":["x","y"],"none":null,"outcome":""})";
    for (const std::string& pattern :
         split("kind=bus|kind=bus what=reply|kind=bus  what=call|kind=b?s|kind=b?|kind=*|kind=|"
               "outcome=|missing=*|what=r*p*y|what=*e*e*|what=rep|at=120 option=false none=null|"
               R"(names=["x","y"]|payload="{\"a b\":*"|)"
               R"(payload="*a b*" kind="\u0062us" within 2s|payload="*a  b*"|payload=*:\"c*|)"
               R"(payload=*:"c:"*||within 2s|kind|payload=a b|=bus|kind="bus|kind="b\us"|)"
               R"(kind="bus"x|kind=bus within|kind=bus within 2s what=call|kind=bus within 2)")) {
        std::string error;
        const auto awaited = tavsim::readAwaited(pattern, &error);
        const char* const matches =
            awaited && tavsim::matches(entry, awaited->pattern) ? "matches" : "does not match";
        note(pattern + " -> " + (awaited ? matches : error));
    }
    EXPECT_FALSE(tavsim::matches("[]", {{"kind", "*"}}));
    EXPECT_FALSE(tavsim::matches("{\"kind\":", {{"kind", "*"}}));
    EXPECT_EQ(tavsim::readAwaited("kind=bus within 1.5s", nullptr)->within, 1500);
}

}  // namespace
