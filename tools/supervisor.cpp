#include "supervisor.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include "tools/process/guard.h"

namespace tools {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kBadSetup = 2;
constexpr int kTimedOut = 124;
constexpr int kCannotStart = 127;
constexpr int kDeathBySignal = 128;

// How long a program may take to end when it is asked to because of --timeout.
constexpr seconds kGrace(5);
// Some ask the process and its group, so that one request comes twice at once; and a program that
// does something else with an interruption than to end, such as a debugger, is not in a hurry.
constexpr milliseconds kSameRequest(200);
constexpr seconds kSecondRequest(5);
constexpr milliseconds kBetweenLooks(20);

bool isFromKeyboard(const siginfo_t& signal) {
    return signal.si_code == SI_KERNEL;
}

bool isOrdinaryEnd(int signal) {
    return signal == SIGINT || signal == SIGTERM || signal == SIGHUP || signal == SIGPIPE;
}

std::string describe(int signal) {
    const char* name = sigabbrev_np(signal);
    const char* description = sigdescr_np(signal);
    return name == nullptr ? "signal " + std::to_string(signal)
                           : std::string("SIG") + name + " (" + description + ")";
}

}  // namespace

RunEnd Supervisor::run(const std::string& file) {
    const ProcessOutput ends = m_output != nullptr ? m_output->programEnds() : ProcessOutput();
    if (const int problem = m_process.start(file, m_request.command, m_signals, ends);
        problem != 0) {
        say(std::strerror(problem));
        return {kCannotStart, false, false};
    }
    const Guard guard([this] {
        m_process.killAsStranger();
        m_folder.signalProgram(SIGKILL, 0);
        endOthers();
        m_folder.release();
    });
    if (m_output != nullptr) {
        m_output->start();
    }
    if (m_request.timeout > 0) {
        const std::chrono::duration<double> limit(m_request.timeout);
        m_limit = Clock::now() + std::chrono::duration_cast<Clock::duration>(limit);
    }
    // The keyboard's signals reach the program by themselves, but not before it was there.
    for (const int signal : {SIGINT, SIGQUIT}) {
        if (Signals::isWaiting(signal)) {
            m_process.send(signal);
        }
    }
    waitForEnd();
    if (m_askedToEnd || m_isTimedOut) {
        endOthers();
    }
    if (m_output != nullptr) {
        m_output->stop();
    }
    return {tellEnd(), true, m_isTimedOut};
}

void Supervisor::waitForEnd() {
    while (!m_process.hasEnded()) {
        const siginfo_t signal = m_signals.take(m_limit);
        if (signal.si_signo == 0) {
            endInTime();
        } else if (signal.si_signo != SIGCHLD) {
            passOn(signal);
        }
    }
}

// What asks this process to end is for the program, and this one stays to clean up behind it.
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
    if (m_isTimedOut) {
        m_limit.reset();
        m_isKilled = true;
        sendAll(SIGKILL);
        return;
    }
    char limit[32];
    std::snprintf(limit, sizeof limit, "%g", m_request.timeout);
    say("ended after " + std::string(limit) + " seconds, its time-out");
    m_isTimedOut = true;
    m_limit = Clock::now() + kGrace;
    sendAll(SIGTERM);
    sendAll(SIGCONT);  // for one that is stopped
}

// Whoever starts a program may be gone before it.
void Supervisor::endOthers() {
    waitUntilUnused();
    m_folder.signalProgram(SIGKILL, 0);
    waitUntilUnused();
}

void Supervisor::waitUntilUnused() const {
    const Clock::time_point limit = Clock::now() + kGrace;
    while (m_folder.isInUse() && Clock::now() < limit) {
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

void Supervisor::sendAll(int signal) const {
    m_process.send(signal);
    m_folder.signalProgram(signal, m_process.id());
}

int Supervisor::tellEnd() const {
    const int status = m_process.status();
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    if (signal != 0 && !isOrdinaryEnd(signal) && !m_isKilled) {
        say("ended by " + describe(signal) +
            (m_request.journal.empty() ? "; `--journal FILE` keeps what it did"
                                       : "; its journal is " + m_request.journal));
    }
    // A device that the program could not have has said so.
    if (m_folder.isUntouched() && !(WIFEXITED(status) && WEXITSTATUS(status) == kBadSetup)) {
        say("did not use the device: nothing reached it from this program, or from what it started "
            "with its environment");
    }
    if (m_isTimedOut) {
        return kTimedOut;
    }
    return signal != 0 ? kDeathBySignal + signal : WEXITSTATUS(status);
}

void Supervisor::say(const std::string& text) const {
    std::fprintf(stderr, "tavsim: %s: %s\n", m_request.command[0].c_str(), text.c_str());
}

}  // namespace tools
