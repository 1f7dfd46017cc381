// Scenarios as they are read from their files. What they do is a matter of whole programs.
#include "simulator/scenario/reader.h"

#include <regex>

#include "transcript.h"

namespace {

using testing::ElementsAre;

class ScenarioTest : public tavtest::TranscriptTest {
protected:
    std::optional<tavsim::Scenario> read(const std::string& text) {
        write("/main", text);
        m_error.clear();
        return tavsim::readScenario(path("/main"), &m_error);
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
    // What is included again and again counts each time.
    write("/wide", "#" + std::string(1 << 18, ' ') + "\n");
    EXPECT_TRUE(read("include wide\ninclude wide\ninclude wide")) << m_error;
    CALL(refused("include wide\ninclude wide\ninclude wide\ninclude wide\n"));
}

}  // namespace
