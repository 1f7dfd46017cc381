// The signals that a run takes in order, none of which is lost.
#ifndef TAV_TOOLS_PROCESS_SIGNALS_H
#define TAV_TOOLS_PROCESS_SIGNALS_H

#include <sys/signalfd.h>

#include <chrono>
#include <csignal>
#include <optional>

namespace tools {

// Some ask the process and its group, so that one request comes twice at once.
inline constexpr std::chrono::milliseconds kSameRequest(200);

class Signals {
public:
    using Moment = std::optional<std::chrono::steady_clock::time_point>;

    // From now on requests to end, and the ends of children, are kept until they are taken: one
    // that comes when everything has ended does not change how. What is ignored, as under nohup,
    // stays ignored.
    Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    // For a child that becomes another program.
    void restore() const { sigprocmask(SIG_SETMASK, &m_before, nullptr); }

    // Whether one has come and was not taken.
    static bool isWaiting(int signal);

    // A new descriptor that can be read from while one is waiting; negative on failure.
    int openDescriptor() const { return signalfd(-1, &m_taken, SFD_NONBLOCK | SFD_CLOEXEC); }

    // The next one; its number is 0 when the moment comes first.
    siginfo_t take(const Moment& until) const;

private:
    sigset_t m_taken;
    sigset_t m_before;
};

}  // namespace tools

#endif
