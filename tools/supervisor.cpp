#include "supervisor.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include "tools/process/exit_status.h"

namespace tools {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// The time that a program has to end when --timeout is over.
constexpr seconds kGrace(5);
// A second request kills only within this time: a debugger, for example, uses Ctrl-C otherwise.
constexpr seconds kSecondRequest(5);
constexpr milliseconds kBetweenLooks(20);

bool isFromKeyboard(const siginfo_t& signal) {
    return signal.si_code == SI_KERNEL;
}

bool isOrdinaryEnd(int signal) {
    return signal == SIGINT || signal == SIGTERM || signal == SIGHUP || signal == SIGPIPE;
}

}  // namespace

RunEnd Supervisor::run(const std::string& file) {
    const ProcessOutput ends = m_output != nullptr ? m_output->programEnds() : ProcessOutput();
    if (const int problem = m_process.start(file, m_request.command, m_signals, ends);
        problem != 0) {
        say(std::strerror(problem));
        return {kCannotStart, false, false, "The program cannot be started."};
    }
    const Guard guard([this] {
        m_members.kill();
        // The kernel has killed the program already. While its memory is freed, it no longer counts
        // as a member, but still holds the device.
        m_process.waitForEnd();
        m_folder.release();
    });
    if (m_output != nullptr) {
        m_output->start();
    }
    if (m_request.timeout > 0) {
        const std::chrono::duration<double> limit(m_request.timeout);
        m_limit = Clock::now() + std::chrono::duration_cast<Clock::duration>(limit);
    }
    // The terminal sends its signals to the program too, but not before it has started.
    for (const int signal : {SIGINT, SIGQUIT}) {
        if (Signals::isWaiting(signal)) {
            m_process.send(signal);
        }
    }
    waitForEnd();
    if (m_askedToEnd || m_isAsked) {
        endOthers();
    }
    if (m_output != nullptr) {
        m_output->stop();
    }
    return tellEnd();
}

void Supervisor::waitForEnd() {
    while (!m_process.hasEnded()) {
        const siginfo_t signal = m_signals.take(m_limit);
        if (signal.si_signo == 0) {
            endInTime();
        } else if (signal.si_signo != SIGCHLD) {
            passOn(signal);
        } else if (const std::string server = m_servers.ended(); !server.empty() && !m_isAsked) {
            say("is asked to end, because its " + server + " has ended");
            askToEnd();
        }
    }
}

// Signals that ask this process to end are passed to the program. This process stays to clean up.
void Supervisor::passOn(const siginfo_t& signal) {
    if (!isFromKeyboard(signal)) {
        sendAll(signal.si_signo);
    }
    if (signal.si_signo == SIGQUIT) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const auto since = m_askedToEnd ? now - *m_askedToEnd : Clock::duration::max();
    if (since > kSecondRequest) {
        m_askedToEnd = now;
    } else if (since > kSameRequest) {
        say("was asked to end a second time, and is killed");
        m_isKilled = true;
        sendAll(SIGKILL);
    }
}

void Supervisor::endInTime() {
    if (m_isAsked) {
        m_limit.reset();
        m_isKilled = true;
        sendAll(SIGKILL);
        return;
    }
    char limit[32];
    std::snprintf(limit, sizeof limit, "%g", m_request.timeout);
    say("ended after " + std::string(limit) + " seconds, its time-out");
    m_isTimedOut = true;
    askToEnd();
}

void Supervisor::askToEnd() {
    m_isAsked = true;
    m_limit = Clock::now() + kGrace;
    sendAll(SIGTERM);
    sendAll(SIGCONT);  // for a stopped process
}

// The parent of a program may end before it.
void Supervisor::endOthers() {
    const Clock::time_point limit = Clock::now() + kGrace;
    while (sendOthers(0), !m_others.empty() && Clock::now() < limit) {
        std::this_thread::sleep_for(kBetweenLooks);
    }
    m_members.kill();
}

void Supervisor::sendAll(int signal) {
    m_process.send(signal);
    sendOthers(signal);
}

// A program that ends leaves its device before it has written all of its output.
void Supervisor::sendOthers(int signal) {
    m_others.merge(m_folder.programs());
    m_others.erase(m_process.id());
    std::erase_if(m_others, [&](pid_t process) { return !m_members.send(process, signal); });
}

RunEnd Supervisor::tellEnd() const {
    const int status = m_process.status();
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    if (signal != 0 && !isOrdinaryEnd(signal) && !m_isKilled) {
        say("ended by " + describe(signal) +
            (m_request.journal.empty() ? "; `--journal FILE` keeps what it did"
                                       : "; its journal is " + m_request.journal));
    }
    // The device has printed why its set-up failed.
    if (m_folder.isUntouched() && !(WIFEXITED(status) && WEXITSTATUS(status) == kBadSetup)) {
        say("did not use the device: nothing reached it from this program, or from what it started "
            "with its environment");
    }
    const std::string how = howEnded(status);
    return {m_isTimedOut ? kTimedOut : exitStatus(status), true, m_isTimedOut,
            m_isTimedOut ? how.substr(0, how.size() - 1) + ", after its time-out." : how};
}

void Supervisor::say(const std::string& text) const {
    complain(m_request.command[0] + ": " + text);
}

}  // namespace tools
