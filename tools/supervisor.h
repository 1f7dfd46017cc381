// A run, from the start of its program to its end.
#pragma once

#include <set>
#include <string>

#include "output_watch.h"
#include "run.h"
#include "run_folder.h"
#include "run_servers.h"
#include "tools/process/process.h"
#include "tools/process/signals.h"

namespace tools {

struct RunEnd {
    int status = 0;  // as of run()
    bool isStarted = true;
    bool isTimedOut = false;
    std::string how;  // in a sentence
};

class Supervisor {
public:
    // The output may be null; then it is not checked. When a server has ended, the program is
    // asked to end.
    Supervisor(const RunRequest& request, RunFolder& folder, const Signals& signals,
               RunServers& servers, OutputWatch* output)
        : m_request(request),
          m_folder(folder),
          m_signals(signals),
          m_servers(servers),
          m_output(output) {}

    // Starts the program, waits until it has ended, and reports how it ended.
    RunEnd run(const std::string& file);

private:
    using Clock = std::chrono::steady_clock;

    void waitForEnd();
    void passOn(const siginfo_t& signal);
    void endInTime();
    void askToEnd();
    void endOthers();
    void sendAll(int signal);
    void sendOthers(int signal);
    RunEnd tellEnd() const;
    void say(const std::string& text) const;

    const RunRequest& m_request;
    RunFolder& m_folder;
    const Signals& m_signals;
    RunServers& m_servers;
    OutputWatch* m_output;
    Members m_members;
    Process m_process;
    std::set<pid_t> m_others;      // that were on a device of the run and have not ended
    Signals::Moment m_limit;       // when the program is ended next: first with SIGTERM
    Signals::Moment m_askedToEnd;  // the time of the last request to end, if a second one counts
    bool m_isTimedOut = false;
    bool m_isAsked = false;  // to end, until the limit
    bool m_isKilled = false;
};

}  // namespace tools
