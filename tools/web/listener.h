// The connections to a server's port.
#pragma once

#include <gio/gio.h>
#include <libsoup/soup.h>

#include <list>
#include <string>

namespace web {

// Accepts connections from this machine for the server, but not without end: of those that are no
// WebSocket, the oldest has to go, and so has each that is silent.
class Listener {
public:
    explicit Listener(SoupServer* server) : m_server(server) {}
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Port 0 stands for any. False, with the reason, where it cannot be listened on.
    bool listen(guint16 port, std::string* error);

    guint16 port() const { return m_port; }

    // This stream of the server's, around a connection, has become a WebSocket.
    void keep(GIOStream* stream);

private:
    static gboolean accept(GSocketService* service, GSocketConnection* connection, GObject* source,
                           gpointer self) noexcept;
    static void forget(gpointer self, GObject* connection) noexcept;
    void makeRoom();

    SoupServer* m_server;
    GSocketService* m_service = nullptr;
    guint16 m_port = 0;
    std::list<GSocketConnection*> m_connections;  // that are no WebSockets, the oldest first
};

}  // namespace web
