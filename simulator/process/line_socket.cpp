#include "simulator/process/line_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace tavsim {
namespace {

constexpr size_t kStep = size_t{64} * 1024;

}  // namespace

void LineSocket::queue(std::string_view line) {
    m_outgoing.append(line).append("\n");
}

void LineSocket::sendNow() {
    m_isGone = m_isGone || !m_socket.isOurs();
    while (!m_outgoing.empty() && !m_isGone) {
        const ssize_t count = send(m_socket.number(), m_outgoing.data(), m_outgoing.size(),
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EINTR) {
            // Whether the other end is gone is told when all that it said has been received.
            return;
        }
        m_outgoing.erase(0, count > 0 ? static_cast<size_t>(count) : 0);
    }
}

void LineSocket::receiveNow() {
    m_isGone = m_isGone || !m_socket.isOurs();
    if (m_isGone) {
        return;
    }
    m_incoming.erase(0, std::exchange(m_taken, 0));
    const size_t before = m_incoming.size();
    m_incoming.resize(before + kStep);
    const ssize_t count = recv(m_socket.number(), m_incoming.data() + before, kStep, MSG_DONTWAIT);
    m_incoming.resize(before + (count > 0 ? static_cast<size_t>(count) : 0));
    m_isGone = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
}

std::optional<std::string> LineSocket::takeLine() {
    const size_t end = m_incoming.find('\n', m_taken);
    if (end == std::string::npos) {
        return std::nullopt;
    }
    const size_t start = std::exchange(m_taken, end + 1);
    return m_incoming.substr(start, end - start);
}

void LineSocket::wait(std::chrono::milliseconds longest) const {
    const short events = POLLIN | (m_outgoing.empty() ? 0 : POLLOUT);
    pollfd waiting = {m_socket.number(), events, 0};
    poll(&waiting, 1, static_cast<int>(longest.count()));
}

void LineSocket::endSending() {
    if (m_socket.isOurs()) {
        shutdown(m_socket.number(), SHUT_WR);
    }
}

}  // namespace tavsim
