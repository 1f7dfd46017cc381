// The panel, which shows devices in a browser: a program of its own, because of its libraries.
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

// The panel of one run. It ends with the run.
class PanelProcess {
public:
    explicit PanelProcess(const Signals& signals) : m_signals(signals) {}
    ~PanelProcess() { end({}); }
    PanelProcess(const PanelProcess&) = delete;
    PanelProcess& operator=(const PanelProcess&) = delete;

    // Starts it for the device with this root folder, before the environment is the program's, and
    // says where it is. False, after printing why, when it cannot be started.
    bool start(const RunRequest& request, const std::string& root);

    // Whether it has ended before the run.
    bool hasEnded();

    // Lets it tell the browser how the program has ended, and waits for its end.
    void end(const std::string& how);

private:
    const Signals& m_signals;
    base::Descriptor m_input;  // of the panel
    pid_t m_id = 0;            // 0: there is none
    bool m_hasEnded = false;
};

}  // namespace tools
