#include "tools/web/listener.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace web {
namespace {

constexpr size_t kMostConnections = 64;
// Seconds without a byte. A browser that is alive answers the pings of its WebSocket.
constexpr guint kLongestSilence = 20;

// Tells connections from this machine apart; 0 where there is no address.
guint16 portOf(GSocketAddress* address) {
    return address != nullptr ? g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address)) : 0;
}

}  // namespace

Listener::~Listener() {
    for (GSocketConnection* connection : m_connections) {
        g_object_weak_unref(G_OBJECT(connection), forget, this);
    }
    if (m_service != nullptr) {
        g_signal_handlers_disconnect_by_data(m_service, this);
        g_socket_service_stop(m_service);
        g_socket_listener_close(G_SOCKET_LISTENER(m_service));
        g_object_unref(m_service);
    }
}

bool Listener::listen(guint16 port, std::string* error) {
    m_service = g_socket_service_new();
    g_socket_listener_set_backlog(G_SOCKET_LISTENER(m_service), SOMAXCONN);
    g_signal_connect(m_service, "incoming", G_CALLBACK(accept), this);
    g_autoptr(GInetAddress) loopback = g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4);
    g_autoptr(GSocketAddress) wanted = g_inet_socket_address_new(loopback, port);
    g_autoptr(GSocketAddress) address = nullptr;
    g_autoptr(GError) problem = nullptr;
    if (g_socket_listener_add_address(G_SOCKET_LISTENER(m_service), wanted, G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_TCP, nullptr, &address, &problem) == 0 ||
        !keepAlive(&problem)) {
        *error = problem->message;
        return false;
    }
    m_port = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address));
    return true;
}

// A server that does not listen by itself closes each connection behind its first request. So it
// gets a socket on which nobody ever connects.
bool Listener::keepAlive(GError** problem) {
    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
        g_set_error_literal(problem, G_IO_ERROR, G_IO_ERROR_FAILED, g_strerror(errno));
        return false;
    }
    m_silent = base::Descriptor(pair[0]);
    g_autoptr(GSocket) socket = g_socket_new_from_fd(pair[1], problem);
    return socket != nullptr &&
           soup_server_listen_socket(m_server, socket, SoupServerListenOptions(0), problem) != 0;
}

void Listener::keep(GSocketAddress* remote) {
    const auto found =
        std::find_if(m_connections.begin(), m_connections.end(), [remote](auto* connection) {
            g_autoptr(GSocketAddress) address =
                g_socket_connection_get_remote_address(connection, nullptr);
            return portOf(address) == portOf(remote);
        });
    if (found != m_connections.end()) {
        g_object_weak_unref(G_OBJECT(*found), forget, this);
        m_connections.erase(found);
    }
}

gboolean Listener::accept(GSocketService*, GSocketConnection* connection, GObject*,
                          gpointer self) noexcept {
    auto* const listener = static_cast<Listener*>(self);
    GSocket* const socket = g_socket_connection_get_socket(connection);
    g_socket_set_timeout(socket, kLongestSilence);
    g_socket_set_option(socket, IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
    listener->makeRoom();
    listener->m_connections.push_back(connection);
    g_object_weak_ref(G_OBJECT(connection), forget, self);
    g_autoptr(GSocketAddress) local = g_socket_connection_get_local_address(connection, nullptr);
    g_autoptr(GSocketAddress) remote = g_socket_connection_get_remote_address(connection, nullptr);
    soup_server_accept_iostream(listener->m_server, G_IO_STREAM(connection), local, remote,
                                nullptr);
    return TRUE;
}

void Listener::forget(gpointer self, GObject* connection) noexcept {
    static_cast<Listener*>(self)->m_connections.remove(
        reinterpret_cast<GSocketConnection*>(connection));
}

// The server notices the end of a connection that is shut down, and gives it up.
void Listener::makeRoom() {
    if (m_connections.size() >= kMostConnections) {
        GSocketConnection* const oldest = m_connections.front();
        g_object_weak_unref(G_OBJECT(oldest), forget, this);
        m_connections.pop_front();
        g_socket_shutdown(g_socket_connection_get_socket(oldest), TRUE, TRUE, nullptr);
    }
}

}  // namespace web
