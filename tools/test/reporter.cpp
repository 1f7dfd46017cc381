#include "tools/test/reporter.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace tools {
namespace {

// Moves to the start of the terminal's line, and empties it.
constexpr char kFreshLine[] = "\r\x1b[K";
constexpr size_t kSlowest = 5;

void append(std::string* text, size_t number, const char* what) {
    if (number > 0) {
        *text += ", " + std::to_string(number) + " " + what;
    }
}

}  // namespace

void Reporter::tellProgress(const std::vector<TestResult>& results, size_t all) const {
    if (m_isOnTerminal) {
        std::string text = std::to_string(results.size()) + " of " + std::to_string(all) +
                           (all == 1 ? " scenario" : " scenarios");
        append(&text, results.size() - count(results, TestResult::Kind::Passed), "failed");
        std::printf("%s%s", kFreshLine, text.c_str());
        std::fflush(stdout);
    }
}

void Reporter::tell(const TestResult& result) const {
    const bool hasPassed = result.kind() == TestResult::Kind::Passed;
    if (!hasPassed || m_isVerbose) {
        std::printf("%s%s\n", freshLine(), result.headline().c_str());
    }
    if (hasPassed) {
        for (const std::string& note : result.notes) {
            std::printf("%s%s\n", freshLine(), note.c_str());
        }
        return;
    }
    const bool endsItsLine = result.output.empty() || result.output.back() == '\n';
    std::printf("%s%s", result.output.c_str(), endsItsLine ? "" : "\n");
}

void Reporter::tellSlowest(std::vector<TestResult> results) const {
    if (!m_isVerbose || results.empty()) {
        return;
    }
    std::sort(results.begin(), results.end(),
              [](const auto& left, const auto& right) { return left.seconds > right.seconds; });
    results.resize(std::min(results.size(), kSlowest));
    std::printf("%sthe slowest:\n", freshLine());
    for (const TestResult& each : results) {
        std::printf("  %.2f s  %s\n", each.seconds, each.what.name().c_str());
    }
}

void Reporter::tellEnd(const std::vector<TestResult>& results, size_t all, double seconds) const {
    if (all == 0) {
        std::puts("none of the scenarios failed when it last ran");
        return;
    }
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
