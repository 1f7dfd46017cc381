#include "tools/web/socket.h"

#include <utility>

namespace web {
namespace {

constexpr guint kBetweenPings = 5;  // seconds

}  // namespace

Socket::Socket(SoupWebsocketConnection* connection, guint64 longestMessage, Events events)
    : m_connection(SOUP_WEBSOCKET_CONNECTION(g_object_ref(connection))),
      m_events(std::move(events)) {
    soup_websocket_connection_set_max_incoming_payload_size(m_connection, longestMessage);
    soup_websocket_connection_set_keepalive_interval(m_connection, kBetweenPings);
    g_signal_connect(m_connection, "message", G_CALLBACK(onMessage), this);
    g_signal_connect(m_connection, "closed", G_CALLBACK(onClosed), this);
}

Socket::~Socket() {
    g_signal_handlers_disconnect_by_data(m_connection, this);
    g_object_unref(m_connection);
}

void Socket::sendText(const std::string& text) {
    if (!isOpen()) {
        return;
    }
    g_autofree char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    soup_websocket_connection_send_text(m_connection, valid);
}

void Socket::sendBinary(const std::string& bytes) {
    if (isOpen()) {
        soup_websocket_connection_send_binary(m_connection, bytes.data(), bytes.size());
    }
}

void Socket::close(gushort code, const char* reason) {
    if (isOpen()) {
        soup_websocket_connection_close(m_connection, code, reason);
    }
}

bool Socket::isOpen() const {
    return soup_websocket_connection_get_state(m_connection) == SOUP_WEBSOCKET_STATE_OPEN;
}

bool Socket::isClosed() const {
    return soup_websocket_connection_get_state(m_connection) == SOUP_WEBSOCKET_STATE_CLOSED;
}

bool Socket::isReady() const {
    GIOStream* const stream = soup_websocket_connection_get_io_stream(m_connection);
    GOutputStream* const output = g_io_stream_get_output_stream(stream);
    return g_pollable_output_stream_is_writable(G_POLLABLE_OUTPUT_STREAM(output)) != 0;
}

void Socket::onMessage(SoupWebsocketConnection*, gint type, GBytes* message,
                       gpointer self) noexcept {
    auto* const socket = static_cast<Socket*>(self);
    if (socket->isTooFast()) {
        socket->close(SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, "too many messages");
    } else if (type != SOUP_WEBSOCKET_DATA_TEXT) {
        socket->m_events.onMessage(std::nullopt);
    } else {
        gsize size = 0;
        const auto* const text = static_cast<const char*>(g_bytes_get_data(message, &size));
        socket->m_events.onMessage(std::string(text, size));
    }
}

void Socket::onClosed(SoupWebsocketConnection*, gpointer self) noexcept {
    static_cast<Socket*>(self)->m_events.onClosed();
}

bool Socket::isTooFast() {
    const Clock::time_point now = Clock::now();
    if (now - m_second > std::chrono::seconds(1)) {
        m_second = now;
        m_messages = 0;
    }
    return ++m_messages > kMostMessages;
}

}  // namespace web
