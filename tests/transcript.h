// Golden files. A transcript has a line for each call: its arguments, result and error, and the
// entries that it caused in the device's journal. It is compared with expected/NAME.txt. A run with
// TAV_WRITE_EXPECTED=1 writes that file anew; review its changes like code.
#pragma once

#include <iomanip>
#include <map>
#include <sstream>
#include <type_traits>

#include "device_test.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "services.h"
#include "simulator/control/commands.h"

namespace tavtest {

class TranscriptTest : public EventTest {
public:
    // Shortens a long value to its beginning, its length and its end.
    static std::string cut(const std::string& whole);

    // The parts as a stream prints them, one after the other.
    template <typename... Parts>
    static std::string join(const Parts&... parts) {
        std::ostringstream text;
        (text << ... << parts);
        return text.str();
    }

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

    // Adds a line. Errors, traces and journal entries from before it no longer count.
    void note(const std::string& line);

    template <typename Function>
    void show(const std::string& call, Function function) {
        note("");
        if constexpr (std::is_void_v<decltype(function())>) {
            function();
            showLine(call, "");
        } else {
            const std::string result = textOf(function());
            showLine(call, result);
        }
    }

    virtual std::string lastError() { return SDL_GetError(); }

    // Carries out the commands on the device. Their paths are relative to the folder.
    void give(const std::vector<std::string>& lines, const std::string& folder = {}) {
        for (const std::string& line : lines) {
            show(line, [&] { return tavsim::carryOut(line, folder).error; });
        }
    }

    // Lets time pass, and shows what happens.
    void pass(int milliseconds) {
        show("--", [&] { device.advance(milliseconds); });
    }

    // Requests that bypass the library. The journal shows their replies.
    int call(const char* uri, const std::string& payload = "{}") {
        return bus.ksCallWithResponse(uri, payload.c_str(), false, ignore, nullptr);
    }

    int subscribe(const char* uri, const std::string& payload = "{}") {
        return bus.ksCallWithSubscription(uri, payload.c_str(), false, ignore, nullptr);
    }

    static void ignore(int, const char*, void*) {}

    HKSCaller& bus = *NApp_GetKSCaller();

    // The values between separators.
    static std::vector<std::string> split(const std::string& text, char separator = '|') {
        std::istringstream rest(text);
        std::vector<std::string> values;
        for (std::string value; std::getline(rest, value, separator);) {
            values.push_back(value);
        }
        return values;
    }

    // The seeds of a fuzzer: each file's name and content.
    static std::map<std::string, std::string> seeds(const std::string& kind);
    static std::vector<std::string> seedLines(const std::string& kind, const std::string& name) {
        return split(seeds(kind).at(name), '\n');
    }
    static std::string seedFolder(const std::string& kind) {
        return TAV_TESTS "/fuzz/seeds/" + kind + "/";
    }

    // What a query writes into a buffer of this length. Fails where it writes beyond the end.
    template <typename Query>
    static std::string filled(Query query, int length) {
        constexpr char kUntouched = '#';
        std::string bytes(300, kUntouched);
        const int code = query(bytes.data(), length);
        const size_t end = bytes.find_last_not_of(kUntouched) + 1;
        if (end == 0) {
            return std::to_string(code) + " untouched";
        }
        EXPECT_LE(static_cast<int>(end), length) << "behind the end of the buffer";
        EXPECT_EQ(bytes[end - 1], '\0') << "not terminated";
        return std::to_string(code) + " '" + bytes.substr(0, end - 1) + "'";
    }

    static std::string textOf(const char* text) {
        return text != nullptr ? "'" + std::string(text) + "'" : "null";
    }
    static std::string textOf(const std::string& text) { return text; }
    template <typename Number>
    static std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>, std::string>
    textOf(Number number) {
        return join(std::setprecision(12), +number);
    }
    template <typename Record>
    static std::string textOf(Record* record) {
        return take(record);
    }

private:
    void showLine(const std::string& call, const std::string& result);
    void compare();

    std::string m_transcript;
    size_t m_journalSeen = 0;
};

}  // namespace tavtest

#define CALL(expression) show(#expression, [&] { return expression; })
