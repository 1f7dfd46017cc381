// A web server beside a run: a program of its own, because of its libraries.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/descriptor.h"
#include "tools/process/signals.h"

namespace tools {

// Ends with the run.
class ServerProcess {
public:
    explicit ServerProcess(const Signals& signals) : m_signals(signals) {}
    ~ServerProcess() { end({}); }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    // Starts it with these words, of which the first is its path, before the environment is the
    // program's, and says where the subject is. False, after printing why, when it cannot be
    // started.
    bool start(const std::vector<std::string>& words, const std::string& subject);

    // Whether it has ended before the run.
    bool hasEnded();

    // Lets it tell the browser how the program has ended, and waits for its end.
    void end(const std::string& how);

private:
    const Signals& m_signals;
    base::Descriptor m_input;  // of the server
    pid_t m_id = 0;            // 0: there is none
    bool m_hasEnded = false;
};

}  // namespace tools
