#include "judge.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "base/json/writer.h"
#include "bridge/page_file.h"
#include "environment.h"
#include "simulator/device/profile.h"
#include "simulator/scenario/parameters.h"
#include "simulator/scenario/recorder.h"
#include "simulator/scenario/verdict.h"
#include "tools/process/exit_status.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

using tavsim::Outcome;
using tavsim::Scenario;
using tavsim::Verdict;

constexpr int kFailed = 3;

int fail(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    return kFailed;
}

int judgeSteps(const RunRequest& request, const Verdict& verdict, const RunEnd& end) {
    switch (verdict.outcome) {
    case Outcome::Passed:
        return end.isTimedOut
                   ? fail(request.scenario +
                          ": all its steps were done, but the application did not end; one whose "
                          "device is only set up is not asked to quit, as by `at 1s: quit`")
                   : 0;
    case Outcome::Failed:
        return kFailed;
    case Outcome::Unplayed:
        // The device has printed why its set-up failed.
        return end.status == kBadSetup ? kBadSetup
                                       : fail(request.scenario +
                                              ": was not played, as the "
                                              "program has used no device");
    case Outcome::Waiting:
        break;
    }
    char since[32];
    std::snprintf(since, sizeof since, "%.0f", verdict.since);
    return fail((verdict.step.empty() ? request.scenario : verdict.step) +
                ": the application ended before this, which was waited for since " + since + " ms");
}

int judgeOutput(const Scenario& scenario, const OutputWatch& output) {
    int status = 0;
    for (size_t n = 0; n < scenario.output.size(); ++n) {
        if (!output.hasSeen(n)) {
            const tavsim::ExpectedOutput& expected = scenario.output[n];
            status = fail(expected.place + ": " + expected.text + ": no such line was printed");
        }
    }
    return status;
}

int judgeStatus(const Scenario& scenario, const RunRequest& request, const RunEnd& end) {
    const int expected = scenario.status ? scenario.status->status : 0;
    if (end.status == expected) {
        return 0;
    }
    return fail((scenario.status ? scenario.status->place : request.scenario) + ": expect status " +
                std::to_string(expected) + ": it is " + std::to_string(end.status));
}

// As a scenario in the folder names it.
std::string fromFolder(const std::string& folder, const std::string& file) {
    std::error_code problem;
    const fs::path path = fs::proximate(absolutePath(file), folder, problem);
    return path.has_parent_path() ? path : fs::path(".") / path;
}

std::string asWord(const std::string& text) {
    const bool isPlain = !text.empty() && text.find('"') == std::string::npos &&
                         std::none_of(text.begin(), text.end(),
                                      [](unsigned char c) { return c <= ' ' || c == 0x7f; });
    return isPlain ? text : "\"" + base::escapedJson(text) + "\"";
}

}  // namespace

void adoptHeader(const Scenario& scenario, RunRequest* request) {
    if (request->device.empty()) {
        request->device = scenario.device.value_or("");
    }
    if (request->command.empty()) {
        request->command = scenario.program;
    }
    if (request->page.empty()) {
        request->page = scenario.page.value_or("");
        request->virtualTime = request->virtualTime && !bridge::isDocument(request->page);
    }
    if (request->timeout == 0) {
        // Who looks at the device in a browser may take their time.
        request->timeout = scenario.limit.value_or(request->panel ? 0 : tavsim::kDefaultLimit);
    }
}

int judge(const Scenario& scenario, const RunRequest& request, const RunFolder& folder,
          const RunEnd& end, const OutputWatch& output) {
    if (!end.isStarted) {
        return end.status;
    }
    const Verdict verdict = tavsim::readVerdict(folder.root());
    if (const int status = judgeSteps(request, verdict, end); status != 0 || end.isTimedOut) {
        return end.isTimedOut ? end.status : status;
    }
    const int status = judgeOutput(scenario, output);
    const int other = judgeStatus(scenario, request, end);
    return status != 0 ? status : other;
}

std::string recordingHeader(const RunRequest& request, const std::string& folder) {
    const bool isFile = tavsim::profilePath(request.device) == request.device;
    std::string header =
        "device " + (isFile ? fromFolder(folder, request.device) : request.device) + "\nprogram";
    for (size_t n = 0; n < request.command.size(); ++n) {
        const std::string& word = request.command[n];
        const bool isPath = n == 0 && word.find('/') != std::string::npos;
        header += " " + asWord(isPath ? fromFolder(folder, word) : word);
    }
    if (!request.page.empty()) {
        header += "\npage " + fromFolder(folder, request.page);
    }
    return tavsim::unfilled(header);
}

bool startRecording(const RunRequest& request, const std::string& root) {
    tavsim::removeRecordingMark(root);
    std::ofstream file(request.record);
    file << recordingHeader(request, fs::path(absolutePath(request.record)).parent_path()) << "\n";
    return file.flush().good();
}

void endRecording(const RunRequest& request, const std::string& root, int status) {
    tavsim::removeRecordingMark(root);
    if (status != 0) {
        std::ofstream(request.record, std::ios::app) << "expect status " << status << "\n";
    }
}

}  // namespace tools
