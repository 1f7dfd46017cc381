// What a run shows in a browser: its device on the panel, and the page whose plug-in its program
// is.
#pragma once

#include <string>

#include "run.h"
#include "server_process.h"
#include "tools/process/signals.h"

namespace tools {

// Replaces this process by a panel of all devices. Returns only on failure, with an exit status.
int runPanel(const PanelOptions& options);

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
