// What a run shows in a browser: its device on the panel, and the page whose plug-in its program
// is.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/descriptor.h"
#include "run.h"
#include "tools/process/signals.h"

namespace tools {

// Replaces this process by a panel of all devices. Returns only on failure, with an exit status.
int runPanel(const PanelOptions& options);

// A web server beside a run, with which it ends: a program of its own, because of its libraries.
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

class RunServers {
public:
    explicit RunServers(const Signals& signals) : m_panel(signals), m_page(signals) {}

    // Starts those that the run needs, for the device with this root folder. False, after printing
    // why, when one cannot be started.
    bool start(const RunRequest& request, const std::string& root);

    // Which has ended before the run: "panel" or "page". Empty: none.
    std::string ended();

    // As of ServerProcess.
    void end(const std::string& how);

private:
    ServerProcess m_panel;
    ServerProcess m_page;
};

}  // namespace tools
