#include "tools/test/reporter.h"

#include <cstdio>
#include <string>

namespace tools {
namespace {

// Moves to the start of the terminal's line, and empties it.
constexpr char kFreshLine[] = "\r\x1b[K";

void append(std::string* text, size_t number, const char* what) {
    if (number > 0) {
        *text += ", " + std::to_string(number) + " " + what;
    }
}

}  // namespace

void Reporter::tellProgress(size_t done, size_t all) const {
    if (m_isOnTerminal) {
        std::printf("%s%zu of %zu scenarios", kFreshLine, done, all);
        std::fflush(stdout);
    }
}

void Reporter::tell(const TestResult& result) const {
    if (result.kind() == TestResult::Kind::Passed) {
        return;
    }
    const bool hasFailed = result.kind() == TestResult::Kind::Failed;
    const bool endsItsLine = result.output.empty() || result.output.back() == '\n';
    std::printf("%s%s %s (%.2f s)\n%s%s", freshLine(), hasFailed ? "FAILED" : "NOT RUN",
                result.scenario.c_str(), result.seconds, result.output.c_str(),
                endsItsLine ? "" : "\n");
}

void Reporter::tellEnd(const std::vector<TestResult>& results, size_t all, double seconds) const {
    std::string text = std::to_string(all) + (all == 1 ? " scenario: " : " scenarios: ") +
                       std::to_string(count(results, TestResult::Kind::Passed)) + " passed";
    append(&text, count(results, TestResult::Kind::Failed), "failed");
    append(&text, count(results, TestResult::Kind::NotRun), "not run");
    append(&text, all - results.size(), "not finished");
    std::printf("%s%s in %.2f s\n", freshLine(), text.c_str(), seconds);
}

const char* Reporter::freshLine() const {
    return m_isOnTerminal ? kFreshLine : "";
}

}  // namespace tools
