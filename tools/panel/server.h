// The panel's web server.
#pragma once

#include <libsoup/soup.h>

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "browser.h"
#include "devices.h"
#include "player.h"
#include "tools/web/server.h"
#include "tools/web/source.h"

namespace panel {

// Serves the page's files and its WebSockets.
class Server {
public:
    explicit Server(const Options& options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // False, with the reason, where it cannot.
    bool start(std::string* error);

    // With the token.
    std::string link() const { return m_server.link(); }

    // Tells the pages why there is no more to come, and then the function that they know.
    void end(const std::string& how, std::function<void()> onTold);

private:
    unsigned whyNot(const web::Request& request) const;
    void connect(SoupWebsocketConnection* connection);
    void remove(Browser* browser);

    const Options& m_options;
    web::Server m_server;
    std::list<std::unique_ptr<Browser>> m_browsers;
    std::list<std::unique_ptr<Browser>> m_gone;
    Player m_player;
    Devices m_devices;
    Common m_common;
    web::Source m_removal;
    web::Source m_lastChance;
    std::function<void()> m_onTold;
};

}  // namespace panel
