// A page with its plug-in, from the program's start to its end.
#pragma once

#include <glib.h>

#include <string>
#include <vector>

#include "application.h"
#include "base/descriptor.h"
#include "page_server.h"
#include "tools/process/process.h"
#include "tools/process/signals.h"
#include "tools/web/source.h"

namespace page {

struct LaunchOptions {
    std::string folder;  // absolute
    Application application;
    std::vector<std::string> arguments;  // of the program
    std::string browser;                 // a command, with {} for the link
    int port = 0;                        // 0: any
    int linger = 10;                     // seconds without a page
};

class Launcher {
public:
    explicit Launcher(LaunchOptions options);
    ~Launcher();
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    // Returns when the program has ended: with its status, 128 + n when signal n ended it, or 2,
    // after printing why, when there is no page with its plug-in.
    int run();

private:
    bool startProgram();
    void startBrowser();
    void onApplication();
    void onPages(size_t count);
    void onSignal();
    void onEnd();
    void askToEnd();
    void fail(const std::string& why);

    LaunchOptions m_options;
    const tools::Signals m_signals;
    const base::Descriptor m_requests;
    char** m_environment;  // of the browser, which is no member
    const tools::Members m_members;
    std::string m_folder;  // of the socket
    tools::Process m_program;
    GPid m_browser = 0;
    ServerOptions m_serverOptions;
    PageServer m_server;
    GMainLoop* m_loop;
    web::Source m_signal;
    web::Source m_limit;  // of what is awaited: the application, a page, the program's end
    bool m_isPlugin = false;
    bool m_hadPage = false;
    bool m_isAsked = false;  // to end
    int m_status = 0;
};

}  // namespace page
