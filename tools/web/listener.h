// The connections to a server's port.
#pragma once

#include <gio/gio.h>
#include <libsoup/soup.h>

#include <list>
#include <string>

#include "base/descriptor.h"

namespace web {

// Accepts connections from this machine for the server, but not without end: of those that are not
// kept, the oldest has to go, and so has each that is silent.
class Listener {
public:
    explicit Listener(SoupServer* server) : m_server(server) {}
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Port 0 stands for any. False, with the reason, where it cannot be listened on.
    bool listen(guint16 port, std::string* error);

    guint16 port() const { return m_port; }

    // The connection from this address does not have to go for another one.
    void keep(GSocketAddress* remote);

private:
    static gboolean accept(GSocketService* service, GSocketConnection* connection, GObject* source,
                           gpointer self) noexcept;
    static void forget(gpointer self, GObject* connection) noexcept;
    void makeRoom();
    bool keepAlive(GError** problem);

    SoupServer* m_server;
    base::Descriptor m_silent;
    GSocketService* m_service = nullptr;
    guint16 m_port = 0;
    std::list<GSocketConnection*> m_connections;  // that are not kept, the oldest first
};

}  // namespace web
