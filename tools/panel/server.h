// The panel's web server.
#pragma once

#include <libsoup/soup.h>

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "browser.h"
#include "devices.h"
#include "listener.h"
#include "player.h"

namespace panel {

// Serves the page's files and its WebSockets, only to who knows the token and comes from this
// machine's own names.
class Server {
public:
    explicit Server(const Options& options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // False, with the reason, where it cannot.
    bool start(std::string* error);

    // With the token.
    std::string link() const;

    // Tells the pages why there is no more to come, and then the function that they know.
    void end(const std::string& how, std::function<void()> onTold);

private:
    static void onHeaders(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self) noexcept;
    static void onRequest(SoupServer* server, SoupServerMessage* message, const char* path,
                          GHashTable* query, gpointer self) noexcept;
    static void onSocket(SoupServer* server, SoupServerMessage* message, const char* path,
                         SoupWebsocketConnection* socket, gpointer self) noexcept;

    unsigned whyNot(SoupServerMessage* message, const std::string& path) const;
    void serve(SoupServerMessage* message, const std::string& name) const;
    void remove(Browser* browser);

    const Options& m_options;
    const std::string m_token;
    const std::string m_policy;
    SoupServer* m_server;
    Listener m_listener;
    std::list<std::unique_ptr<Browser>> m_browsers;
    std::list<std::unique_ptr<Browser>> m_gone;
    Player m_player;
    Devices m_devices;
    Common m_common;
    Source m_removal;
    Source m_lastChance;
    std::function<void()> m_onTold;
};

}  // namespace panel
