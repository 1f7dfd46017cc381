// The web server of a plug-in's page, between the browser and the application.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace page {

struct ServerOptions {
    std::string folder;              // absolute; its files are served
    std::string index;               // the main page, a path below it
    std::vector<std::string> hosts;  // origins that the page may use too
    std::string socket;              // where the application connects
    int port = 0;                    // 0: any
};

struct ServerEvents {
    std::function<void()> onApplication;        // one has connected
    std::function<void()> onApplicationGone;    // its connection is closed
    std::function<void(size_t count)> onPages;  // so many pages are open now
};

class PageServer {
public:
    PageServer(const ServerOptions& options, ServerEvents events);

    // Listens for pages and for the application. False, with the reason, where it cannot.
    bool start(std::string* error);

    // With the token.
    std::string link() const;

    // Tells the pages why there is no more to come, and then the function that they know.
    void end(const std::string& how, std::function<void()> onTold);

private:
    const ServerOptions& m_options;
    ServerEvents m_events;
};

}  // namespace page
