#include "tools/process/signals.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace tools {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr int kRequests[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

bool isIgnored(int signal) {
    struct sigaction action;
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Signals::Signals() {
    // If our parent ignored SIGCHLD, we would not get the exit status of our children.
    std::signal(SIGCHLD, SIG_DFL);
    sigemptyset(&m_taken);
    sigaddset(&m_taken, SIGCHLD);
    for (const int signal : kRequests) {
        if (!isIgnored(signal)) {
            sigaddset(&m_taken, signal);
        }
    }
    sigprocmask(SIG_BLOCK, &m_taken, &m_before);
}

bool Signals::isWaiting(int signal) {
    sigset_t waiting;
    return sigpending(&waiting) == 0 && sigismember(&waiting, signal) == 1;
}

siginfo_t Signals::take(const Moment& until) const {
    siginfo_t signal{};
    if (!until) {
        while (sigwaitinfo(&m_taken, &signal) < 0 && errno == EINTR) {}
        return signal;
    }
    int taken = 0;
    do {
        const nanoseconds left = std::max(*until - steady_clock::now(), nanoseconds(0));
        const seconds whole = duration_cast<seconds>(left);
        const timespec wait = {static_cast<time_t>(whole.count()),
                               static_cast<long>((left - whole).count())};
        taken = sigtimedwait(&m_taken, &signal, &wait);
    } while (taken < 0 && errno == EINTR);
    return taken < 0 ? siginfo_t{} : signal;
}

}  // namespace tools
