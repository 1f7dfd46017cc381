// Reading scenarios from files. Whole programs show what the steps do (programs/scenario_test.sh).
#include "simulator/scenario/reader.h"

#include <array>
#include <regex>

#include "transcript.h"

namespace {

using testing::ElementsAre;

class ScenarioTest : public tavtest::TranscriptTest {
protected:
    std::optional<tavsim::Scenario> read(const std::string& text, const std::string& row = {}) {
        write("/main", text);
        m_error.clear();
        return tavsim::readScenario(path("/main"), row, &m_error);
    }

    std::string m_error;
};

TEST_F(ScenarioTest, IncludedStatementsStandInPlaceAndFilesBesideTheirScenario) {
    write("/parts/head", "device ../x.json\nprogram ./app \"two words\" --x=1\npage p.js\n");
    write("/parts/step", "\t# note\r\n  quit  \r\n\r\nexpect output \"a b\"\ninclude more/step");
    write("/parts/more/step", "plugin on");
    const auto scenario = read(
        "limit 1.5\ninclude parts/head\nat 2s: plugin off\ninclude parts/step\n"
        "when what=call payload=\"a: \\u0062\" within 3min : reply vire://x/y {\"a\": 1}\n"
        "expect status 7");
    ASSERT_TRUE(scenario) << m_error;
    EXPECT_EQ(scenario->device, path("/parts/../x.json"));
    EXPECT_EQ(scenario->page, path("/parts/p.js"));
    EXPECT_THAT(scenario->program, ElementsAre(path("/parts/./app"), "two words", "--x=1"));
    EXPECT_EQ(scenario->limit, 1.5);
    EXPECT_EQ(scenario->status->status, 7);
    ASSERT_EQ(scenario->output.size(), 1u);
    EXPECT_EQ(scenario->output[0].place, path("/parts/step:4"));
    EXPECT_EQ(scenario->output[0].glob, "a b");

    std::vector<std::string> steps;
    for (const tavsim::Step& step : scenario->steps) {
        const auto& command = std::get<tavsim::CommandLine>(step.action);
        steps.push_back(step.place.substr(path("/").size()) + " " + command.line);
    }
    EXPECT_THAT(steps,
                ElementsAre("main:3 plugin off", "parts/step:2 quit", "parts/more/step:1 plugin on",
                            "main:5 reply vire://x/y {\"a\": 1}"));
    EXPECT_EQ(std::get<tavsim::AtTime>(scenario->steps[0].turn).time, 2000);
    EXPECT_EQ(std::get<tavsim::AfterTime>(scenario->steps[1].turn).time, 0);
    const auto& when = std::get<tavsim::WhenEntry>(scenario->steps[3].turn);
    EXPECT_EQ(when.within, 180000);
    EXPECT_EQ(when.pattern.back().glob, "a: b");

    EXPECT_TRUE(read("program app")->program[0] == "app") << "one without a slash is looked for";
    EXPECT_TRUE(read("device fern")->device == "fern");
}

TEST_F(ScenarioTest, ParametersAndRowsAreFilledIn) {
    write("/steps", "at ${when}: key tap ${key}\nexpect output \"$${${key} ${none}\"\n");
    const std::string text =
        "table row when\n slow 5s\n# note\n \"very fast\" 1ms\nend\n"
        "include steps when=${when} none=\"\" key=\"left shift\"\nwhen at=b: quit\n";
    ASSERT_TRUE(read(text)) << m_error;
    EXPECT_THAT(read(text)->rows, ElementsAre("slow", "very fast"));
    const auto scenario = read(text, "very fast");
    ASSERT_TRUE(scenario) << m_error;
    EXPECT_EQ(scenario->steps[0].text, "at 1ms: key tap left shift");
    EXPECT_EQ(scenario->output[0].glob, "${left shift ");
    EXPECT_TRUE(tavsim::expectsSomething(*scenario));
    EXPECT_TRUE(tavsim::expectsSomething(*read("picture a.png")));
    EXPECT_TRUE(tavsim::expectsSomething(*read("when at=b: quit")));
    EXPECT_FALSE(tavsim::expectsSomething(*read("at 1s: quit")));
}

TEST_F(ScenarioTest, WrongBlocksTablesAndParametersAreOneErrorEach) {
    const auto many = [](size_t count, const char* line) {
        std::string lines;
        for (size_t n = 0; n < count; ++n) {
            lines += std::regex_replace(line, std::regex("#"), std::to_string(n)) + "\n";
        }
        return lines;
    };
    write("/plain", "key tap ${key}");
    const std::vector<std::array<std::string, 3>> cases = {
        {"expect all\nend", "", "main:2: the block is empty"},
        {"quit\nexpect within 1s all\nat=b", "", "main:2: the block has no end"},
        {"expect all\nat=b within 1s", "", "main:2: within has no meaning here"},
        {"expect all\ninclude plain", "", "main:2: \"include\" is not MEMBER=GLOB"},
        {"expect all\n" + many(101, "at=b"), "", "main:102: more than 100 lines in one block"},
        {"end", "", "main:1: there is no block to end"},
        {"table", "", "main:1: table: the columns are missing"},
        {"table a a", "", "main:1: table: \"a\" is given twice"},
        {"table a b\n1 2 3", "", "main:2: 3 values for 2 columns; *"},
        {"table a\n1\n1", "", "main:3: there are two rows \"1\""},
        {"table a\nend", "", "main:2: the table is empty"},
        {"table a\n" + many(1001, "#"), "", "main:1002: more than 1000 rows"},
        {"table a\n" + std::string(2000000, '\n'), "", "main: is larger than 1 MiB"},
        {"quit\ntable a", "", "main:2: table: stands in front of everything else"},
        {"table a\nfern\nend", "firn", "main:3: no row \"firn\"; did you mean \"fern\"?"},
        {"table a b\n1 2\nend", "1", "main:1: table: nothing uses the parameter \"b\""},
        {"quit", "1", "main: no table, and so no row \"1\""},
        {"include plain key=a kee=b", "", "main:1: include: nothing uses *\"kee\""},
        {"include plain kee=b", "", "plain:1: no parameter \"key\" *main:1; did you mean \"kee\"?"},
        {"include plain key", "", "main:1: include: \"key\" is not NAME=VALUE; *"},
        {"include plain key=\"a\\n\"", "", "main:1: include: * without control characters"},
        {"include plain k$=a", "", "main:1: include: \"k$\": a name has letters, *"},
        {"include plain " + std::regex_replace(many(101, "k#=1"), std::regex("\n"), " "), "",
         "main:1: include: more than 100 parameters"},
        {"key tap ${key", "", "main:1: no parameter \"key\" is given; $${ stands *"},
    };
    for (const auto& [text, row, error] : cases) {
        EXPECT_FALSE(read(text, row)) << text;
        EXPECT_TRUE(base::matchesGlob(m_error, "*/" + error)) << m_error;
    }
    write("/doubles", "include doubles a=\"${a}${a}\"");
    EXPECT_FALSE(read("include doubles a=" + std::string(1 << 18, 'x')));
    EXPECT_THAT(m_error, testing::HasSubstr(": more than 1 MiB, with what is filled in"));
}

TEST_F(ScenarioTest, MalformedStatementsAreNamed) {
    for (const std::string& line : seedLines("scenario", "malformed")) {
        EXPECT_FALSE(read(std::regex_replace(line, std::regex("; "), "\n"))) << line;
        note(line + " -> " + cut(m_error));
    }
}

TEST_F(ScenarioTest, LimitsHold) {
    std::string steps;
    for (int n = 0; n < 10000; ++n) {
        steps += "quit\n";
    }
    EXPECT_TRUE(read(steps)) << m_error;
    const auto refused = [&](const std::string& text) { return read(text) ? "not" : m_error; };
    CALL(refused(steps + "quit"));
    CALL(refused(std::string((1 << 20) + 1, '#')));
    CALL(refused(std::string("quit\0", 5)));
    CALL(refused("\xEF\xBB\xBFlimit 60\nat 1e9s: quit"));
    CALL(refused("when " + std::string(900000, 'x') + ": quit"));
    // A file counts towards the limit each time it is included.
    write("/wide", "#" + std::string(1 << 18, ' ') + "\n");
    EXPECT_TRUE(read("include wide\ninclude wide\ninclude wide")) << m_error;
    CALL(refused("include wide\ninclude wide\ninclude wide\ninclude wide\n"));
}

}  // namespace
