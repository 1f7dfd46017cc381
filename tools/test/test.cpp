#include "tools/test/test.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "base/glob.h"
#include "base/json/writer.h"
#include "tools/process/exit_status.h"
#include "tools/process/signals.h"
#include "tools/test/failed_cases.h"
#include "tools/test/junit.h"
#include "tools/test/scenario_files.h"
#include "tools/test/suite.h"

namespace tools {
namespace {

constexpr int kSomeFailed = 1;
constexpr int kNotRun = 2;

int statusOf(const std::vector<TestResult>& results) {
    if (count(results, TestResult::Kind::NotRun) > 0) {
        return kNotRun;
    }
    return count(results, TestResult::Kind::Failed) > 0 ? kSomeFailed : 0;
}

std::optional<std::vector<TestCase>> casesOf(const TestRequest& request, std::string* error) {
    auto cases = findScenarios(request.paths, error);
    if (!cases) {
        return std::nullopt;
    }
    const std::string glob = "*" + request.filter + "*";
    std::erase_if(*cases,
                  [&](const TestCase& one) { return !base::matchesGlob(one.name(), glob); });
    if (cases->empty()) {
        *error = "no scenario has " + base::quoted(request.filter) + " in its name";
        return std::nullopt;
    }
    if (request.failed) {
        std::erase_if(*cases, [](const TestCase& one) { return !hasFailed(one); });
    }
    return cases;
}

}  // namespace

int test(const TestRequest& request) {
    if (request.paths.empty()) {
        return complain("test: no scenario and no folder given");
    }
    std::string error;
    const auto cases = casesOf(request, &error);
    if (!cases) {
        return complain("test: " + error);
    }
    // Opened first, to report an error before the tests run.
    std::ofstream report;
    if (!request.junit.empty()) {
        report.open(request.junit);
        removeDifferences(request.junit);
    }
    // Windows of many programs at once would be of no use.
    setenv("SDL_VIDEODRIVER", "dummy", 0);
    setenv("SDL_AUDIODRIVER", "dummy", 0);
    const Signals signals;
    Suite suite(request, *cases, signals);
    const int signal = report ? suite.run() : 0;
    if (!request.junit.empty()) {
        writeJunitReport(suite.results(), suite.seconds(), request.junit, report);
    }
    if (!report.flush()) {
        return complain("test: " + request.junit + ": the report cannot be written");
    }
    suite.tellEnd();
    return signal != 0 ? kDeathBySignal + signal : statusOf(suite.results());
}

}  // namespace tools
