#include "tools/process/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

extern "C" {  // which the header itself lacks
#include <sys/pidfd.h>
}

#include "base/child.h"
#include "base/descriptor.h"
#include "base/environment.h"
#include "base/file.h"
#include "base/number.h"
#include "tools/process/exit_status.h"

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kName[] = "tavsim-guard";
constexpr int kParentDied = SIGTERM;
constexpr char kVariable[] = "TAVSIM_RUN";
constexpr char kElement[] = "<tav-plugin";
constexpr size_t kLargestPage = 16 << 20;
// For processes that cannot be killed at once, because they wait for a disk.
constexpr std::chrono::seconds kLongestEnd(5);
constexpr std::chrono::milliseconds kBetweenLooks(5);

bool hasEnded(const base::Descriptor& process) {
    pollfd end = {process.number(), POLLIN, 0};
    return poll(&end, 1, 0) != 0;
}

void waitForDeathOf(pid_t parent) {
    sigset_t all;
    sigset_t awaited;
    sigfillset(&all);
    sigemptyset(&awaited);
    sigaddset(&awaited, kParentDied);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    prctl(PR_SET_PDEATHSIG, kParentDied);
    while (getppid() == parent) {
        sigwaitinfo(&awaited, nullptr);
    }
}

std::string newMark() {
    return '<' + std::to_string(getpid()) + '-' +
           std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + '>';
}

}  // namespace

int execute(const std::string& file, const std::vector<std::string>& words) {
    execv(file.c_str(), base::pointersTo(words).data());
    return errno;
}

void drawInPage(const std::string& page) {
    constexpr int onlyUnset = 0;
    std::string error;
    if (base::readFile(page, kLargestPage, &error).value_or("").find(kElement) !=
        std::string::npos) {
        setenv("SDL_VIDEODRIVER", "dummy", onlyUnset);
    }
}

int Process::start(const std::string& file, const std::vector<std::string>& words,
                   const Signals& signals, ProcessOutput output) {
    m_id = base::startProgram([&] {
        int input = -1;
        if (output.isApart) {
            setpgid(0, 0);
            input = open("/dev/null", O_RDONLY | O_CLOEXEC);
        }
        base::setStandardStreams(input, output.standard, output.error);
        signals.restore();
        execute(file, words);
    });
    if (m_id < 0) {
        return errno;
    }
    m_handle = base::Descriptor(pidfd_open(m_id, 0));
    return 0;
}

bool Process::hasEnded() {
    return waitpid(m_id, &m_status, WNOHANG) == m_id;
}

void Process::send(int signal) const {
    kill(m_id, signal);
}

void Process::waitForEnd() const {
    pollfd end = {m_handle.number(), POLLIN, 0};
    poll(&end, 1, std::chrono::milliseconds(kLongestEnd).count());
}

std::string describe(int signal) {
    const char* name = sigabbrev_np(signal);
    const char* description = sigdescr_np(signal);
    return name == nullptr ? "signal " + std::to_string(signal)
                           : std::string("SIG") + name + " (" + description + ")";
}

std::string howEnded(int status) {
    return WIFSIGNALED(status)
               ? "The program was ended by " + describe(WTERMSIG(status)) + "."
               : "The program has ended with status " + std::to_string(exitStatus(status)) + ".";
}

int exitStatus(int status) {
    return WIFSIGNALED(status) ? kDeathBySignal + WTERMSIG(status) : WEXITSTATUS(status);
}

Guard::Guard(const std::function<void()>& cleanUp) {
    const pid_t parent = getpid();
    m_process = fork();
    if (m_process == 0) {
        setsid();  // out of the way of what kills a whole group
        prctl(PR_SET_NAME, kName);
        waitForDeathOf(parent);
        cleanUp();
        _exit(0);
    }
}

Guard::~Guard() {
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

Members::Members() : m_mark(newMark()) {
    setenv(kVariable, (base::environment(kVariable) + m_mark).c_str(), 1);
}

// A process that has ended has no environment.
bool Members::has(pid_t process) const {
    std::ifstream environment("/proc/" + std::to_string(process) + "/environ");
    std::string variable;
    while (std::getline(environment, variable, '\0')) {
        if (variable.starts_with(kVariable) && variable.find(m_mark) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// The process, if it is a member and has got the signal.
base::Descriptor Members::signalled(pid_t process, int signal) const {
    // Opened first. Otherwise there is a race: another process could get the same number meanwhile.
    base::Descriptor handle(process > 0 ? pidfd_open(process, 0) : -1);
    const bool isDone = handle.isOurs() && has(process) &&
                        pidfd_send_signal(handle.number(), signal, nullptr, 0) == 0;
    return isDone ? std::move(handle) : base::Descriptor();
}

bool Members::send(pid_t process, int signal) const {
    return signalled(process, signal).isOurs();
}

// A process that is ending keeps its device for a moment after it has lost its environment.
void Members::kill() const {
    const Clock::time_point limit = Clock::now() + kLongestEnd;
    std::vector<base::Descriptor> killed;
    bool isNoneNew = false;
    while (Clock::now() < limit && !(isNoneNew && killed.empty())) {
        isNoneNew = true;
        for (const std::string& path : base::entriesOf("/proc")) {
            const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
            const pid_t process = base::numberIn<pid_t>(name).value_or(0);  // 0: no process
            if (base::Descriptor handle = signalled(process, SIGKILL); handle.isOurs()) {
                isNoneNew = false;
                killed.push_back(std::move(handle));
            }
        }
        std::erase_if(killed, hasEnded);
        if (!isNoneNew || !killed.empty()) {
            std::this_thread::sleep_for(kBetweenLooks);
        }
    }
}

}  // namespace tools
