#include "run.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

#include "base/application_folder.h"
#include "base/file.h"
#include "bridge/page_file.h"
#include "environment.h"
#include "judge.h"
#include "output_watch.h"
#include "program.h"
#include "run_folder.h"
#include "run_servers.h"
#include "simulator/device/profile.h"
#include "simulator/device/trusted_folder.h"
#include "simulator/scenario/check.h"
#include "simulator/scenario/reader.h"
#include "simulator/scenario/verdict.h"
#include "supervisor.h"
#include "tools/process/exit_status.h"
#include "tools/process/process.h"
#include "tools/process/signals.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr char kNoPreload[] =
    "the simulated device is installed in a folder whose name holds a blank, a colon or a dollar, "
    "and so does the temporary folder; set TMPDIR to another one";

constexpr char kOwnDevice[] = "/device.json";
constexpr char kNoProgram[] = "run: no program given";

// A shell passes an empty name for an unset variable.
bool hasNoProgram(const RunRequest& request) {
    return request.command.empty() || request.command[0].empty();
}

// The profile that an application brings with it, or the usual one.
std::string deviceOf(const std::string& program) {
    int unused = 0;
    const std::string file = findProgram(program, &unused);
    const std::string own = base::applicationFolder(file) + kOwnDevice;
    std::error_code problem;
    return !file.empty() && fs::exists(own, problem) ? own : tavsim::kDefaultDevice;
}

// Finds errors before the program starts that would otherwise only appear inside of it. Empty when
// there are none.
std::string whyNoSetup(const RunRequest& request) {
    std::string error;
    if (!tavsim::readProfile(tavsim::profilePath(request.device), &error)) {
        return error;
    }
    if (!request.page.empty()) {
        error = base::whyNoFile(request.page);
    }
    if (error.empty() && request.virtualTime) {
        error = bridge::whyNotInVirtualTime(request.page);
    }
    if (!error.empty()) {
        return error;
    }
    std::error_code problem;
    if (!request.record.empty() && fs::equivalent(request.record, request.scenario, problem)) {
        return request.record + ": is the scenario that is played";
    }
    return request.root.empty() ? std::string()
                                : tavsim::makeTrustedRoot(absolutePath(request.root));
}

// Nothing, after printing why, when there is a scenario and it is malformed.
std::optional<tavsim::Scenario> scenarioOf(const RunRequest& request) {
    std::string error;
    if (request.scenario.empty()) {
        return tavsim::Scenario();
    }
    std::optional<tavsim::Scenario> scenario =
        tavsim::readScenario(request.scenario, request.row, &error);
    if (scenario && !scenario->rows.empty()) {
        error = tavsim::whyNoRow(request.scenario, *scenario);
    }
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return std::nullopt;
    }
    return scenario;
}

void warn(const tavsim::Scenario& scenario, const std::string& device) {
    std::string error;
    const auto profile = tavsim::readProfile(tavsim::profilePath(device), &error);
    for (const std::string& warning : tavsim::warningsOf(scenario, *profile)) {
        std::fprintf(stderr, "%s\n", warning.c_str());
    }
}

// The file of a program that something can be preloaded into. Empty, after printing why and with
// the exit status, when there is none.
std::string runnableFile(const std::string& name, int* status) {
    int problem = 0;
    std::string file = findProgram(name, &problem);
    if (file.empty()) {
        *status = complain(name + ": " + std::strerror(problem), kCannotStart);
    } else if (const std::string reason = whyNoDevice(file); !reason.empty()) {
        *status = complain(reason);
        file.clear();
    }
    return file;
}

// Replaces this process by the program. Returns only on failure, with an exit status.
int runOnThisMachine(const std::vector<std::string>& command) {
    int status = 0;
    const std::string file = runnableFile(command[0], &status);
    if (file.empty()) {
        return status;
    }
    std::string reason;
    const std::string library = preloadableLinux(&reason);
    if (library.empty()) {
        return complain(reason);
    }
    preload(library);
    return complain(command[0] + ": " + std::strerror(execute(file, command)), kCannotStart);
}

}  // namespace

int run(RunRequest request) {
    if (request.real) {
        return hasNoProgram(request) ? complain(kNoProgram) : runOnThisMachine(request.command);
    }
    if (request.scenario.empty() && !request.row.empty()) {
        return complain("run: --row chooses a row of the scenario that --scenario names");
    }
    const Signals signals;
    const std::optional<tavsim::Scenario> scenario = scenarioOf(request);
    if (!scenario) {
        return kBadSetup;
    }
    if (!request.scenario.empty()) {
        adoptHeader(*scenario, &request);
    }
    if (hasNoProgram(request)) {
        return complain(kNoProgram);
    }
    if (request.device.empty()) {
        request.device = deviceOf(request.command[0]);
    }
    if (const std::string reason = whyNoSetup(request); !reason.empty()) {
        return complain(reason);
    }
    int status = 0;
    const std::string file = runnableFile(request.command[0], &status);
    if (file.empty()) {
        return status;
    }
    RunFolder folder(request.root);
    if (!folder.problem().empty()) {
        return complain(folder.problem());
    }
    const std::string simulator = preloadableSimulator(folder);
    if (simulator.empty()) {
        return complain(kNoPreload);
    }
    // It is emptied, and the devices of the run append to it.
    if (!request.journal.empty() && !std::ofstream(request.journal)) {
        return complain(request.journal + ": the journal cannot be written there");
    }
    if (request.panel && request.record.empty()) {
        request.record = folder.root() + tavsim::kRecording;
    }
    if (!request.record.empty() && !startRecording(request, folder.root())) {
        return complain(request.record + ": the recording cannot be written there");
    }
    OutputWatch output(scenario->output);
    if (!scenario->output.empty() && !output.open()) {
        return complain(std::string("no pipe for the program's output: ") + std::strerror(errno));
    }
    warn(*scenario, request.device);
    RunServers servers(signals);
    if (!servers.start(request, folder.root())) {
        return kBadSetup;
    }
    tavsim::removeVerdict(folder.root());
    setEnvironment(request, folder.root(), simulator);
    Supervisor supervisor(request, folder, signals, servers,
                          scenario->output.empty() ? nullptr : &output);
    const RunEnd end = supervisor.run(file);
    servers.end(end.how);
    if (!request.record.empty()) {
        endRecording(request, folder.root(), end.status);
    }
    return request.scenario.empty() ? end.status : judge(*scenario, request, folder, end, output);
}

}  // namespace tools
