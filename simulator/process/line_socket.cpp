#include "simulator/process/line_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <iterator>

namespace tavsim {
namespace {

constexpr size_t kStep = size_t{64} * 1024;

}  // namespace

void LineSocket::queue(std::string_view line) {
    m_outgoing.append(line).append("\n");
}

void LineSocket::sendNow() {
    m_isGone = m_isGone || !isOurs();
    while (!m_outgoing.empty() && !m_isGone && !m_isUnread) {
        const ssize_t count = send(m_toProgram.number(), m_outgoing.data(), m_outgoing.size(),
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EINTR) {
            // The end of the connection is reported only when everything was received.
            m_isUnread = errno != EAGAIN;
            return;
        }
        m_outgoing.erase(0, count > 0 ? static_cast<size_t>(count) : 0);
    }
}

void LineSocket::receiveNow(bool hadEnded) {
    m_isGone = m_isGone || !isOurs();
    if (m_isGone) {
        return;
    }
    m_incoming.erase(0, std::exchange(m_taken, 0));
    const size_t before = m_incoming.size();
    m_incoming.resize(before + kStep);
    const ssize_t count =
        recv(m_fromProgram.number(), m_incoming.data() + before, kStep, MSG_DONTWAIT);
    m_incoming.resize(before + (count > 0 ? static_cast<size_t>(count) : 0));
    const bool isNothingThere = count < 0 && (errno == EAGAIN || errno == EINTR);
    m_isGone = count <= 0 && (!isNothingThere || m_isUnread || hadEnded);
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
    const int receiver = m_outgoing.empty() ? -1 : m_toProgram.number();
    pollfd waiting[] = {{m_fromProgram.number(), POLLIN, 0}, {receiver, POLLOUT, 0}};
    poll(waiting, std::size(waiting), static_cast<int>(longest.count()));
}

void LineSocket::endSending() {
    if (m_toProgram.isOurs()) {
        shutdown(m_toProgram.number(), SHUT_WR);
    }
}

}  // namespace tavsim
