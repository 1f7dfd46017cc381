// Times and patterns of entries of the journal, as they are written in commands and scenarios.
#include "simulator/control/pattern.h"

#include "device_test.h"

namespace {

using testing::HasSubstr;

TEST(PatternTest, TimesAreNumbersWithAUnit) {
    const struct {
        const char* word;
        std::optional<tavsim::Milliseconds> time;
    } cases[] = {
        {"250ms", 250},
        {"1.5s", 1500},
        {"2min", 120000},
        {"0s", 0},
        {"0.6ms", 1},
        {".5s", 500},
        {"4294967295ms", 4294967295},
        {"", {}},
        {"5", {}},
        {"s", {}},
        {"-1s", {}},
        {"-0s", {}},
        {"1 s", {}},
        {"1e3s", {}},
        {"1S", {}},
        {"1.2.3s", {}},
        {"infs", {}},
        {"nanms", {}},
        {"4294967296ms", {}},
        {"1sec", {}},
        {"+1s", {}},
    };
    for (const auto& [word, time] : cases) {
        EXPECT_EQ(tavsim::readTime(word), time) << word;
    }
}

TEST(PatternTest, AllMembersMustMatchOneEntry) {
    const char* const entry =
        R"({"at":120,"kind":"bus","what":"reply","payload":"{\"a b\":\"c:\"}","option":false,)"
        R"("names":["x","y"],"none":null,"outcome":""})";
    const struct {
        const char* pattern;
        bool isMatch;
    } cases[] = {
        {"kind=bus", true},
        {"kind=bus what=reply", true},
        {"kind=bus  what=call", false},
        {"kind=b?s", true},
        {"kind=b?", false},
        {"kind=*", true},
        {"kind=", false},
        {"outcome=", true},
        {"missing=*", false},
        {"what=r*p*y", true},
        {"what=*e*e*", false},
        {"what=rep", false},
        {"at=120 option=false none=null", true},
        {R"(names=["x","y"])", true},
        {R"(payload="{\"a b\":*")", true},
        {R"(payload="*a b*" kind="\u0062us" within 2s)", true},
        {R"(payload="*a  b*")", false},
        {R"(payload=*:\"c*)", false},
        {R"(payload=*:"c:"*)", true},
    };
    for (const auto& [pattern, isMatch] : cases) {
        std::string error;
        const auto awaited = tavsim::readAwaited(pattern, &error);
        ASSERT_TRUE(awaited) << pattern << ": " << error;
        EXPECT_EQ(tavsim::matches(entry, awaited->pattern), isMatch) << pattern;
    }
    EXPECT_FALSE(tavsim::matches("[]", {{"kind", "*"}}));
    EXPECT_FALSE(tavsim::matches("{\"kind\":", {{"kind", "*"}}));
}

TEST(PatternTest, SaysWhatIsMalformed) {
    const struct {
        const char* pattern;
        const char* error;
    } cases[] = {
        {"", "is missing"},
        {"within 2s", "is missing"},
        {"kind", R"("kind" is not MEMBER=GLOB)"},
        {"payload=a b", R"("b" is not MEMBER=GLOB)"},
        {"=bus", "is not MEMBER=GLOB"},
        {R"(kind="bus)", "must be a JSON string"},
        {R"(kind="b\us")", "must be a JSON string"},
        {R"(kind="bus"x)", "must be a JSON string"},
        {"kind=bus within", "a time is a number"},
        {"kind=bus within 2", R"("2": a time)"},
        {"kind=bus within 2s what=call", R"("what=call" stands behind the end)"},
    };
    for (const auto& [pattern, expected] : cases) {
        std::string error;
        EXPECT_FALSE(tavsim::readAwaited(pattern, &error)) << pattern;
        EXPECT_THAT(error, HasSubstr(expected)) << pattern;
    }
    EXPECT_EQ(tavsim::readAwaited("kind=bus within 1.5s", nullptr)->within, 1500);
}

}  // namespace
