#include "tools/test/result.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "tools/process/exit_status.h"

namespace tools {
namespace {

constexpr size_t kLongestPlace = 4096;
constexpr std::string_view kSpeaker = "tavsim: ";

// FILE:LINE: and a text, of a file that is there.
bool isAboutALine(std::string_view line) {
    line = line.substr(0, kLongestPlace);
    for (size_t colon = line.find(':'); colon != std::string_view::npos;
         colon = line.find(':', colon + 1)) {
        const std::string_view behind = line.substr(colon + 1);
        const size_t digits = std::min(behind.find_first_not_of("0123456789"), behind.size());
        std::error_code problem;
        if (digits > 0 && behind.substr(digits).starts_with(": ") &&
            std::filesystem::is_regular_file(line.substr(0, colon), problem)) {
            return true;
        }
    }
    return false;
}

}  // namespace

TestResult::Kind TestResult::kind() const {
    if (status == 0) {
        return Kind::Passed;
    }
    return status == kBadSetup || status == kCannotStart ? Kind::NotRun : Kind::Failed;
}

std::string TestResult::headline() const {
    constexpr const char* kWords[] = {"passed", "FAILED", "NOT RUN"};
    char time[32];
    std::snprintf(time, sizeof time, " (%.2f s)", seconds);
    return kWords[static_cast<size_t>(kind())] + (" " + what.name()) + time;
}

size_t TestResult::reasonAt() const {
    size_t at = 0;
    while (at < output.size()) {
        const std::string_view rest = std::string_view(output).substr(at);
        const size_t spoken = rest.starts_with(kSpeaker) ? kSpeaker.size() : 0;
        const std::string_view line = rest.substr(0, rest.find('\n'));
        if (isAboutALine(line.substr(spoken))) {
            return at + spoken;
        }
        at += line.size() + 1;
    }
    return std::string::npos;
}

std::string TestResult::reason() const {
    if (const size_t at = reasonAt(); at != std::string::npos) {
        return output.substr(at, output.find('\n', at) - at);
    }
    if (kind() == Kind::NotRun) {
        return "could not be run";
    }
    return status == kTimedOut ? "has not ended in its time"
                               : "ended with status " + std::to_string(status);
}

std::string TestResult::details() const {
    const size_t at = reasonAt();
    return at == std::string::npos ? output : output.substr(at);
}

size_t count(const std::vector<TestResult>& results, TestResult::Kind kind) {
    return static_cast<size_t>(
        std::count_if(results.begin(), results.end(),
                      [kind](const TestResult& result) { return result.kind() == kind; }));
}

}  // namespace tools
