// Scenarios as they are read from their files. What they do is a matter of whole programs.
#include "simulator/scenario/reader.h"

#include <filesystem>
#include <fstream>

#include "device_test.h"

namespace fs = std::filesystem;

namespace {

using tavsim::Scenario;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ScenarioTest : public testing::Test {
protected:
    void SetUp() override {
        const std::string folder = testing::TempDir() + "scenario-XXXXXX";
        m_folder = folder;
        ASSERT_NE(mkdtemp(m_folder.data()), nullptr);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return m_folder + "/" + name; }

    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(fs::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << text;
    }

    std::optional<Scenario> read(const std::string& text) {
        write("main", text);
        m_error.clear();
        return tavsim::readScenario(path("main"), &m_error);
    }

    // Each is a text and what is said about it, behind the file's name.
    struct Malformed {
        std::string text;
        std::string error;
    };
    void expectRefused(const std::vector<Malformed>& cases) {
        for (const auto& [text, error] : cases) {
            EXPECT_FALSE(read(text)) << text;
            EXPECT_THAT(m_error, StartsWith(path("main") + ":" + error)) << text;
            EXPECT_EQ(m_error.find('\n'), std::string::npos) << m_error;
        }
    }

    std::string m_folder;
    std::string m_error;
};

TEST_F(ScenarioTest, IncludedStatementsStandInPlaceAndFilesBesideTheirScenario) {
    write("parts/head", "device ../x.json\nprogram ./app \"two words\" --x=1\npage p.js\n");
    write("parts/step", "\t# note\r\n  quit  \r\n\r\nexpect output \"a b\"\ninclude more/step");
    write("parts/more/step", "plugin on");
    const auto scenario = read(
        "limit 1.5\ninclude parts/head\nat 2s: plugin off\ninclude parts/step\n"
        "when what=call payload=\"a: \\u0062\" within 3min : reply vire://x/y {\"a\": 1}\n"
        "expect status 7");
    ASSERT_TRUE(scenario) << m_error;
    EXPECT_EQ(scenario->device, path("parts/../x.json"));
    EXPECT_EQ(scenario->page, path("parts/p.js"));
    EXPECT_THAT(scenario->program, ElementsAre(path("parts/./app"), "two words", "--x=1"));
    EXPECT_EQ(scenario->limit, 1.5);
    EXPECT_EQ(scenario->status->status, 7);
    ASSERT_EQ(scenario->output.size(), 1u);
    EXPECT_EQ(scenario->output[0].place, path("parts/step:4"));
    EXPECT_EQ(scenario->output[0].glob, "a b");

    std::vector<std::string> steps;
    for (const tavsim::Step& step : scenario->steps) {
        const auto& command = std::get<tavsim::CommandLine>(step.action);
        steps.push_back(step.place.substr(m_folder.size() + 1) + " " + command.line);
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
    expectRefused({
        {"\n\nlocaton 1", "3: no command \"locaton\"; did you mean \"location\"?"},
        {"expct what=call", "1: no command \"expct\"; did you mean \"expect\"?"},
        {"state", "1: state only shows something"},
        {"wait ready", "1: wait only shows something"},
        {"compass 1 2", "1: usage: compass INT DOUBLE DOUBLE"},
        {"compass 1 2 x", "1: usage: compass"},
        {"compass 1 2 3 4", "1: usage: compass"},
        {"plugin maybe", "1: usage: plugin on|off"},
        {"reply vire://x/y", "1: usage: reply URI TEXT"},
        {"set property", "1: usage: set property KEY VALUE"},
        {"quit now", "1: usage: quit"},
        {"quit\ndevice fern", "2: device: stands in front of the first step"},
        {"device fern\ndevice fern", "2: device: was given already"},
        {"device", "1: device: the device's name or file is missing"},
        {"program", "1: program: the program is missing"},
        {"program \"app", "1: program: what begins with a quote"},
        {"page", "1: page: "},
        {"limit 0", "1: limit: the limit is a number of seconds"},
        {"limit nan", "1: limit: "},
        {"at 5: quit", "1: \"5\": a time is a number with ms, s or min"},
        {"at: quit", "1: a step is [at TIME:|"},
        {"at 5s quit", "1: a step is [at TIME:|"},
        {"at 5s:", "1: a step is [at TIME:|"},
        {"after 5s 6s: quit", "1: a step is [at TIME:|"},
        {"when call: quit", "1: \"call\" is not MEMBER=GLOB"},
        {"when what=call within 5: quit", "1: \"5\": a time is"},
        {"expect", "1: usage: expect"},
        {"expect outptu x", "1: expect: no \"outptu\"; did you mean \"output\"?"},
        {"expect what=call within 5s", "1: the limit comes first"},
        {"expect within what=call", "1: \"what=call\": a time is"},
        {"expect within 5s", "1: what the entry has is missing"},
        {"expect never for 5s", "1: what the entry has is missing"},
        {"expect never for what=call", "1: \"what=call\": a time is"},
        {"expect state keyboard", "1: usage: expect state"},
        {"expect state port 80 tcp open", "1: usage: expect state"},
        {"expect output two words", "1: usage: expect output"},
        {"at 5s: expect output x", "1: expect output holds for the whole run"},
        {"expect ended in 5s", "1: usage: expect ended"},
        {"expect status 256", "1: usage: expect status N, from 0 to 255"},
        {"expect status 0\nexpect status 0", "2: expect status: was given already"},
        {"include", "1: include: the file is missing"},
        {"include none", "1: include: " + path("none") + ": No such file"},
        {"include .", "1: include: "},
        {"include main", "1: include: more than 16 files deep"},
    });
}

TEST_F(ScenarioTest, LimitsHold) {
    std::string steps;
    for (int n = 0; n < 10000; ++n) {
        steps += "quit\n";
    }
    EXPECT_TRUE(read(steps)) << m_error;
    expectRefused({{steps + "quit", "10001: more than 10000 steps"},
                   {std::string((1 << 20) + 1, '#'), " more than 1 MiB"},
                   {std::string("quit\0", 5), " no text: it has a zero byte"}});
    // What is included again and again counts each time.
    write("wide", "#" + std::string(1 << 18, ' ') + "\n");
    EXPECT_TRUE(read("include wide\ninclude wide\ninclude wide")) << m_error;
    EXPECT_FALSE(read("include wide\ninclude wide\ninclude wide\ninclude wide\n"));
    EXPECT_THAT(m_error, HasSubstr("main:4: include: "));
    EXPECT_THAT(m_error, HasSubstr("more than 1 MiB"));
}

}  // namespace
