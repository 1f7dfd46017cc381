#include "device_connection.h"

#include <cerrno>
#include <utility>

#include "base/socket_address.h"
#include "simulator/control/protocol.h"
#include "simulator/device/trusted_folder.h"

namespace panel {
namespace {

constexpr uint64_t kLongestAnswer = 256 << 20;
constexpr int kMostAtOnce = 64;  // messages, so that the others get their turn

}  // namespace

DeviceConnection::Opened DeviceConnection::open(const std::string& root) {
    close();
    const int socket = base::connectTo(root + tavsim::kControlSocket);
    if (socket < 0) {
        return errno == EAGAIN ? Opened::Crowded : Opened::None;
    }
    m_socket.emplace(socket, kLongestAnswer);
    hold(false);
    return Opened::Yes;
}

void DeviceConnection::close() {
    m_readable.stop();
    m_writable.stop();
    m_socket.reset();
}

void DeviceConnection::send(std::string_view line) {
    if (m_socket) {
        m_socket->queue(static_cast<uint8_t>(tavsim::ControlMessage::Command), line);
        transmit();
    }
}

void DeviceConnection::hold(bool isHeld) {
    if (isHeld) {
        m_readable.stop();
    } else if (m_socket && !m_readable.isRunning()) {
        m_readable.onReady(m_socket->socket(), G_IO_IN, [this] { receive(); });
    }
}

void DeviceConnection::receive() {
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

// That the device has gone shows in receive().
void DeviceConnection::transmit() {
    m_socket->sendNow();
    if (m_socket->queued() == 0 || m_socket->isGone()) {
        m_writable.stop();
    } else if (!m_writable.isRunning()) {
        m_writable.onReady(m_socket->socket(), G_IO_OUT, [this] { transmit(); });
    }
}

}  // namespace panel
