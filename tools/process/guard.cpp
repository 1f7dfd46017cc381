#include "tools/process/guard.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

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
