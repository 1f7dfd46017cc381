#include "run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "environment.h"
#include "program.h"
#include "run_folder.h"
#include "simulator/device/profile.h"
#include "simulator/device/trusted_folder.h"
#include "supervisor.h"
#include "tools/process/signals.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr int kBadSetup = 2;
constexpr int kCannotStart = 127;

constexpr char kNoPreload[] =
    "the simulated device is installed in a folder whose name holds a blank, a colon or a dollar, "
    "and so does the temporary folder; set TMPDIR to another one";

int complain(const std::string& text, int status = kBadSetup) {
    std::fprintf(stderr, "tavsim: %s\n", text.c_str());
    return status;
}

// The devices of the run append to it.
bool emptyJournal(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return file >= 0 && close(file) == 0;
}

// What would only go wrong inside the program is found out before it starts. Empty when nothing is.
std::string whyNoSetup(const RunRequest& request) {
    std::string error;
    if (!tavsim::readProfile(tavsim::profilePath(request.device), &error)) {
        return error;
    }
    std::error_code problem;
    if (!request.page.empty() && !fs::is_regular_file(request.page, problem)) {
        return request.page + ": no such page script";
    }
    return request.root.empty() ? std::string()
                                : tavsim::makeTrustedRoot(absolutePath(request.root));
}

}  // namespace

int run(const RunRequest& request) {
    const Signals signals;
    if (const std::string reason = whyNoSetup(request); !reason.empty()) {
        return complain(reason);
    }
    int problem = 0;
    const std::string file = findProgram(request.command[0], &problem);
    if (file.empty()) {
        return complain(request.command[0] + ": " + std::strerror(problem), kCannotStart);
    }
    if (const std::string reason = whyNoDevice(file); !reason.empty()) {
        return complain(reason);
    }
    RunFolder folder(request.root);
    if (!folder.problem().empty()) {
        return complain(folder.problem());
    }
    const std::string simulator = preloadableSimulator(folder);
    if (simulator.empty()) {
        return complain(kNoPreload);
    }
    if (!request.journal.empty() && !emptyJournal(request.journal)) {
        return complain(request.journal + ": the journal cannot be written there");
    }
    setEnvironment(request, folder.root(), simulator);
    return Supervisor(request, folder, signals).run(file);
}

}  // namespace tools
