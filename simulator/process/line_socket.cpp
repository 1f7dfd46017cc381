#include "simulator/process/line_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <iterator>

#include "base/message_socket.h"

namespace tavsim {

void LineSocket::queue(std::string_view line) {
    m_outgoing.append(line).append("\n");
}

// The end of the connection is reported only when everything was received.
void LineSocket::sendNow() {
    m_isGone = m_isGone || !isOurs();
    size_t sent = 0;
    m_isUnread = m_isUnread || m_isGone || !base::sendNow(m_toProgram.number(), m_outgoing, &sent);
    m_outgoing.erase(0, sent);
}

void LineSocket::receiveNow(bool hadEnded) {
    m_isGone = m_isGone || !isOurs();
    if (m_isGone) {
        return;
    }
    m_incoming.erase(0, std::exchange(m_taken, 0));
    const base::Received received =
        base::receiveNow(m_fromProgram.number(), base::kReceiveStep, &m_incoming);
    m_isGone = received == base::Received::End ||
               (received == base::Received::NothingYet && (m_isUnread || hadEnded));
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
