// A connection to another program on this machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "base/message_socket.h"
#include "tools/web/source.h"

namespace web {

// Served by the main loop. Never waits for the other program.
class Connection {
public:
    // Is called with each message. May close and open this connection, but not destroy it.
    using OnMessage = std::function<void(base::Message)>;
    // Is called when the other program has closed the connection.
    using OnGone = std::function<void()>;

    Connection(OnMessage onMessage, OnGone onGone)
        : m_onMessage(std::move(onMessage)), m_onGone(std::move(onGone)) {}

    // Takes the connected socket in place of the one that there was.
    void adopt(int socket, uint64_t longestMessage);
    void close();
    bool isOpen() const { return m_socket.has_value(); }

    // Where there is no connection, this does nothing.
    void queue(uint8_t kind, std::string_view content);

    // So many bytes were not taken yet.
    size_t queued() const { return isOpen() ? m_socket->queued() : 0; }

    // While it is held, no message is taken, so that the other program notices that its reader is
    // slow.
    void hold(bool isHeld);

private:
    void receive();
    void transmit();

    OnMessage m_onMessage;
    OnGone m_onGone;
    std::optional<base::MessageSocket> m_socket;
    Source m_readable;
    Source m_writable;
};

}  // namespace web
