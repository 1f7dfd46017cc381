#include "run.h"

#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "simulator/interface/device.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr int kBadSetup = 2;
constexpr int kCannotStart = 127;
constexpr int kDeathBySignal = 128;

std::string absolutePath(const std::string& path) {
    std::error_code problem;
    return path.empty() ? path : fs::absolute(path, problem).string();
}

// The library that implements the device is the one that this program itself uses.
std::string simulatorLibrary() {
    Dl_info info;
    const auto own = reinterpret_cast<const void*>(&tavsim::device);
    return dladdr(own, &info) != 0 ? absolutePath(info.dli_fname) : std::string();
}

// The device's root folder for one run: the one asked for, or a fresh one that goes with the run.
class RootFolder {
public:
    explicit RootFolder(const std::string& wanted)
        : m_isFresh(wanted.empty()),
          m_path(m_isFresh ? tavsim::makeFreshRoot() : absolutePath(wanted)) {}
    ~RootFolder() {
        if (m_isFresh) {
            tavsim::removeFreshRoot(m_path);
        }
    }
    RootFolder(const RootFolder&) = delete;
    RootFolder& operator=(const RootFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    bool m_isFresh;
    std::string m_path;
};

// The device reads its set-up from the environment, so a preloaded simulator needs no more.
void setEnvironment(const RunRequest& request, const std::string& root) {
    const auto set = [](const char* name, const std::string& value) {
        value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
    };
    set("TAVSIM_DEVICE", absolutePath(tavsim::profilePath(request.device)));
    set("TAVSIM_ROOT", root);
    set("TAVSIM_PAGE", absolutePath(request.page));
    set("TAVSIM_JOURNAL", absolutePath(request.journal));
    set("TAVSIM_PLUGIN", request.plugin ? "1" : "");
    set("TAVSIM_VIRTUAL_TIME", request.virtualTime ? "1" : "");
    set("TAVSIM_CONTROL", "1");
    const char* others = std::getenv("LD_PRELOAD");
    const std::string preload = simulatorLibrary();
    set("LD_PRELOAD", others != nullptr ? preload + ":" + others : preload);
}

bool complain(const std::string& text) {
    std::fprintf(stderr, "tavsim: %s\n", text.c_str());
    return false;
}

// What would only go wrong inside the program is found out before it starts.
bool canBeSetUp(const RunRequest& request) {
    const std::string path = tavsim::profilePath(request.device);
    std::string error;
    if (!tavsim::readProfile(path, &error)) {
        const bool isName = path != request.device;
        return complain(error + (isName ? " (`tavsim devices` lists those that there are)" : ""));
    }
    std::error_code problem;
    if (!request.page.empty() && !fs::is_regular_file(request.page, problem)) {
        return complain(request.page + ": no such page script");
    }
    if (!request.root.empty() && !fs::is_directory(request.root, problem) &&
        !fs::create_directories(request.root, problem)) {
        return complain(request.root + ": the device's root folder cannot be made");
    }
    const fs::path journalFolder = fs::path(absolutePath(request.journal)).parent_path();
    if (!request.journal.empty() && !fs::is_directory(journalFolder, problem)) {
        return complain(request.journal + ": no such folder for the journal");
    }
    // Devices append to it.
    if (!request.journal.empty() && !std::ofstream(request.journal)) {
        return complain(request.journal + ": the journal cannot be written there");
    }
    return true;
}

int spawn(const std::vector<std::string>& command, pid_t* process) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    return posix_spawnp(process, arguments[0], nullptr, nullptr, arguments.data(), environ);
}

volatile pid_t g_program = 0;

void passOn(int signal) {
    kill(g_program, signal);
}

// What asks this process to end is for the program, and this one stays to clean up behind it. The
// keyboard's signals reach the program by themselves.
int waitFor(pid_t process) {
    g_program = process;
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGQUIT, SIG_IGN);
    std::signal(SIGTERM, passOn);
    std::signal(SIGHUP, passOn);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {}
    return WIFSIGNALED(status) ? kDeathBySignal + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

int run(const RunRequest& request) {
    if (!canBeSetUp(request)) {
        return kBadSetup;
    }
    const RootFolder root(request.root);
    if (root.path().empty()) {
        complain(tavsim::freshRootsFolder() + ": no folder for the device can be made there");
        return kBadSetup;
    }
    setEnvironment(request, root.path());
    pid_t process = 0;
    const int problem = spawn(request.command, &process);
    if (problem != 0) {
        complain(request.command[0] + ": " + std::strerror(problem));
        return kCannotStart;
    }
    return waitFor(process);
}

}  // namespace tools
