#include "tools/test/junit.h"

#include <glib.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace fs = std::filesystem;

namespace tools {
namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

// XML 1.0 cannot represent these.
bool isImpossible(gunichar c) {
    const bool isControl = c < ' ' && c != '\t' && c != '\n' && c != '\r';
    return isControl || c == 0xfffe || c == 0xffff;
}

std::string xml(std::string_view text) {
    const Text valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    std::string possible;
    for (const char* at = valid.get(); *at != '\0'; at = g_utf8_next_char(at)) {
        const size_t size = static_cast<size_t>(g_utf8_next_char(at) - at);
        isImpossible(g_utf8_get_char(at)) ? possible += '?' : possible.append(at, size);
    }
    const Text escaped(g_markup_escape_text(possible.data(), static_cast<gssize>(possible.size())),
                       g_free);
    return escaped.get();
}

std::string attribute(const char* name, std::string_view value) {
    return std::string(" ") + name + "=\"" + xml(value) + '"';
}

std::string time(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return attribute("time", text);
}

std::string counts(const std::vector<TestResult>& results) {
    const auto number = [](const char* name, size_t value) {
        return attribute(name, std::to_string(value));
    };
    return number("tests", results.size()) +
           number("failures", count(results, TestResult::Kind::Failed)) +
           number("errors", count(results, TestResult::Kind::NotRun)) + number("skipped", 0);
}

std::string testCase(const TestResult& result) {
    const fs::path file(result.scenario);
    std::string text = "    <testcase" + attribute("classname", file.parent_path().string()) +
                       attribute("name", file.stem().string()) +
                       attribute("file", result.scenario) + time(result.seconds) + ">\n";
    const TestResult::Kind kind = result.kind();
    if (kind != TestResult::Kind::Passed) {
        const std::string tag = kind == TestResult::Kind::Failed ? "failure" : "error";
        text += "      <" + tag + attribute("message", result.reason()) + ">" +
                xml(result.details()) + "</" + tag + ">\n";
    }
    return text + "      <system-out>" + xml(result.output) + "</system-out>\n    </testcase>\n";
}

}  // namespace

std::string junitReport(const std::vector<TestResult>& results, double seconds) {
    const std::string totals = counts(results) + time(seconds);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + totals +
                       ">\n  <testsuite" + attribute("name", "tavsim") + totals + ">\n";
    for (const TestResult& result : results) {
        text += testCase(result);
    }
    return text + "  </testsuite>\n</testsuites>\n";
}

}  // namespace tools
