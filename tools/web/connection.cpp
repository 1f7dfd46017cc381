#include "tools/web/connection.h"

namespace web {
namespace {

constexpr int kMostAtOnce = 64;  // messages, so that the others get their turn

}  // namespace

void Connection::adopt(int socket, uint64_t longestMessage) {
    close();
    m_socket.emplace(socket, longestMessage);
    hold(false);
}

void Connection::close() {
    m_readable.stop();
    m_writable.stop();
    m_socket.reset();
}

void Connection::queue(uint8_t kind, std::string_view content) {
    if (m_socket) {
        m_socket->queue(kind, content);
        transmit();
    }
}

void Connection::hold(bool isHeld) {
    if (isHeld) {
        m_readable.stop();
    } else if (m_socket && !m_readable.isRunning()) {
        m_readable.onReady(m_socket->socket(), G_IO_IN, [this] { receive(); });
    }
}

void Connection::receive() {
    for (int count = 0; count < kMostAtOnce && m_socket && m_readable.isRunning(); ++count) {
        std::optional<base::Message> message = m_socket->receiveNow();
        if (!message) {
            break;
        }
        m_onMessage(std::move(*message));
    }
    if (m_socket && m_socket->isGone()) {
        close();
        m_onGone();
    }
}

// That the other program has gone shows in receive().
void Connection::transmit() {
    m_socket->sendNow();
    if (m_socket->queued() == 0 || m_socket->isGone()) {
        m_writable.stop();
    } else if (!m_writable.isRunning()) {
        m_writable.onReady(m_socket->socket(), G_IO_OUT, [this] { transmit(); });
    }
}

}  // namespace web
