// A transcript of calls: what each returns, the error that it leaves, what it traces, and what the
// device's journal has of it. It is compared with expected/NAME.txt, which a run with
// TAV_WRITE_EXPECTED=1 writes anew, for its changes to be read like code.
#ifndef TAV_TESTS_TRANSCRIPT_H
#define TAV_TESTS_TRANSCRIPT_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <type_traits>

#include "device_test.h"
#include "services.h"
#include "simulator/control/commands.h"

namespace tavtest {

class TranscriptTest : public EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        note("");
    }

    void TearDown() override {
        EventTest::TearDown();
        if (!m_transcript.empty()) {
            compare();
        }
    }

    // A line of its own, and a new beginning for traces and journal.
    void note(const std::string& line) {
        m_transcript += line.empty() ? "" : line + "\n";
        SDL_ClearError();
        trace();
        m_journalSeen = device.journal().size();
    }

    template <typename Function>
    void show(const std::string& call, Function function) {
        note("");
        std::string result;
        if constexpr (std::is_void_v<decltype(function())>) {
            function();
        } else {
            result = textOf(function());
            result = result.empty() ? "" : " = " + result;
        }
        const std::string error = lastError();
        m_transcript += call + result + (error.empty() ? "" : " \"" + error + "\"") + "\n";
        for (const std::string& line : trace()) {
            m_transcript += "    " + line + "\n";
        }
        const auto& journal = device.journal();
        const std::string atOnce = "{\"at\":0,";
        for (size_t line = std::min(m_journalSeen, journal.size()); line < journal.size(); ++line) {
            const bool isAtOnce = journal[line].starts_with(atOnce);
            m_transcript += "    " + journal[line].substr(isAtOnce ? atOnce.size() : 1) + "\n";
        }
    }

    virtual std::string lastError() { return SDL_GetError(); }

    // Gives the device these commands, which find files in that folder.
    void give(const std::vector<std::string>& lines, const std::string& folder = {}) {
        for (const std::string& line : lines) {
            show(line, [&] { return tavsim::carryOut(line, folder).error; });
        }
    }

    // The fuzzers' inputs of a kind: each name and its content.
    static std::map<std::string, std::string> seeds(const std::string& kind) {
        std::map<std::string, std::string> contents;
        for (const auto& seed : std::filesystem::directory_iterator(seedFolder(kind))) {
            std::ifstream file(seed.path(), std::ios::binary);
            contents[seed.path().filename()] = {std::istreambuf_iterator<char>(file), {}};
        }
        return contents;
    }

    static std::vector<std::string> seedLines(const std::string& kind, const std::string& name) {
        std::istringstream text(seeds(kind).at(name));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    static std::string seedFolder(const std::string& kind) {
        return TAV_TESTS "/fuzz/seeds/" + kind + "/";
    }

    // A query that fills a buffer of this length, or of none; nothing around it may change.
    template <typename Query>
    static std::string filled(Query query, int length) {
        constexpr char kUntouched = '#';
        std::string bytes(300, kUntouched);
        const int code = query(bytes.data(), length);
        const size_t end = bytes.find_last_not_of(kUntouched) + 1;
        EXPECT_TRUE(end == 0 || (length > 0 && end <= static_cast<size_t>(length)))
            << "the end of the buffer, " << length << ", was not the end";
        return std::to_string(code) +
               (end == 0 ? " untouched" : " '" + std::string(bytes.c_str()) + "'");
    }

private:
    static std::string textOf(const char* text) {
        return text != nullptr ? "'" + std::string(text) + "'" : "null";
    }
    static std::string textOf(const std::string& text) { return text; }
    template <typename Number>
    static std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>, std::string>
    textOf(Number number) {
        std::ostringstream text;
        text.precision(12);
        text << +number;
        return text.str();
    }
    template <typename Record>
    static std::string textOf(Record* record) {
        return take(record);
    }

    void compare() {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        const std::string path = std::string(TAV_TESTS "/expected/") + test->test_suite_name() +
                                 "-" + test->name() + ".txt";
        // Addresses and folders differ from run to run, tokens with what ran before, and with the
        // version what other libraries complain of.
        static const std::regex address("0x[0-9a-f]+");
        static const std::regex root("/[^ :\"]*/tavsim-[0-9]+/[0-9]+-[A-Za-z0-9]{6}");
        static const std::regex token(R"re((token"?[ :]|blockingCallCallback |\\"id\\":)[0-9]+)re");
        static const std::regex complaint("(not JSON|no XML|no PNG|no whole PNG): .*");
        std::string transcript = std::regex_replace(m_transcript, root, "ROOT");
        transcript = std::regex_replace(transcript, address, "P");
        transcript = std::regex_replace(transcript, token, "$1T");
        transcript = std::regex_replace(transcript, complaint, "$1");
        if (std::getenv("TAV_WRITE_EXPECTED") != nullptr) {
            std::ofstream(path, std::ios::binary) << transcript;
        }
        std::ifstream file(path, std::ios::binary);
        const std::string expected(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(transcript, expected) << path;
    }

    std::string m_transcript;
    size_t m_journalSeen = 0;
};

}  // namespace tavtest

#define CALL(expression) show(#expression, [&] { return expression; })

#endif
