// The signals of a run, taken in order without losing any.
#pragma once

#include <sys/signalfd.h>

#include <chrono>
#include <csignal>
#include <optional>

namespace tools {

// Some senders signal the process and its group, so that one request comes twice at once.
inline constexpr std::chrono::milliseconds kSameRequest(200);

class Signals {
public:
    using Moment = std::optional<std::chrono::steady_clock::time_point>;

    // From now on requests to end, and SIGCHLD, are blocked until they are taken. So a late request
    // does not change the exit status. Ignored signals, as under nohup, stay ignored.
    Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    // Unblocks them in a child that executes another program.
    void restore() const { sigprocmask(SIG_SETMASK, &m_before, nullptr); }

    // Whether a signal is pending.
    static bool isWaiting(int signal);

    // A new descriptor that is readable while one is pending; negative on failure.
    int openDescriptor() const { return signalfd(-1, &m_taken, SFD_NONBLOCK | SFD_CLOEXEC); }

    // Takes the next signal; its number is 0 when the moment comes first.
    siginfo_t take(const Moment& until) const;

private:
    sigset_t m_taken;
    sigset_t m_before;
};

}  // namespace tools
