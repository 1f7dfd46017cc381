#include "tools/process/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "base/child.h"

namespace tools {
namespace {

constexpr char kName[] = "tavsim-guard";
constexpr int kParentDied = SIGTERM;

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

}  // namespace

int execute(const std::string& file, const std::vector<std::string>& words) {
    execv(file.c_str(), base::pointersTo(words).data());
    return errno;
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
    return m_id < 0 ? errno : 0;
}

bool Process::hasEnded() {
    return waitpid(m_id, &m_status, WNOHANG) == m_id;
}

void Process::send(int signal) const {
    kill(m_id, signal);
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

}  // namespace tools
