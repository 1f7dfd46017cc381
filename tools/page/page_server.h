// The web server of a plug-in's page, between the browser and the application.
#pragma once

#include <libsoup/soup.h>

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "calls.h"
#include "document.h"
#include "plugin.h"
#include "tools/web/server.h"
#include "tools/web/source.h"

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
    std::function<void(size_t count)> onPages;  // so many pages are open now
};

// The newest document has the plug-in.
class PageServer {
public:
    PageServer(const ServerOptions& options, ServerEvents events);
    ~PageServer();
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    // Listens for pages and for the application. False, with the reason, where it cannot.
    bool start(std::string* error);

    // With the token.
    std::string link() const;

    // Tells the pages why there is no more to come, and then the function that they know.
    void end(const std::string& how, std::function<void()> onTold);

private:
    unsigned whyNot(const web::Request& request) const;
    void serve(const web::Request& request);
    void serveFile(const web::Request& request);
    void serveDocument(const web::Request& request, const std::string& content);
    void serveCall(const web::Request& request);
    void connect(const web::Request& request, SoupWebsocketConnection* connection);
    void onConnection();

    void onApplication();
    void onApplicationGone();
    void hear(const base::Message& message);
    void endWith(const std::string& how);

    int beginDocument();
    Document* newest() const { return m_documents.empty() ? nullptr : m_documents.back().get(); }
    std::unique_ptr<Document> newDocument(int number);

    const ServerOptions& m_options;
    const ServerEvents m_events;
    const std::string m_cookie;  // which the browser hands back, but no script can read
    web::Server m_server;
    Plugin m_plugin;
    Calls m_calls;
    std::list<std::unique_ptr<Document>> m_documents;  // the newest last
    int m_lastNumber = 0;
    std::string m_end;  // how all has ended; empty before that
    web::Source m_lastWords;
    web::Source m_removal;
    web::Source m_lastChance;
    std::function<void()> m_onTold;
};

}  // namespace page
