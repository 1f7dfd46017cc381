#include "base/message_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace base {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr size_t kHeaderSize = sizeof(uint8_t) + sizeof(uint64_t);
constexpr int kForEver = -1;

uint64_t contentLength(const std::string& header) {
    uint64_t length = 0;
    std::memcpy(&length, header.data() + sizeof(uint8_t), sizeof length);
    return length;
}

int forPoll(milliseconds time) {
    return static_cast<int>(std::clamp<milliseconds::rep>(time.count(), 0, INT_MAX));
}

}  // namespace

bool sendNow(int socket, const std::string& bytes, size_t* sent) {
    while (*sent < bytes.size()) {
        const ssize_t count =
            send(socket, bytes.data() + *sent, bytes.size() - *sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EINTR) {
            return errno == EAGAIN;
        }
        *sent += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

Received receiveNow(int socket, size_t most, std::string* bytes) {
    const size_t before = bytes->size();
    bytes->resize(before + most);
    const ssize_t count = recv(socket, bytes->data() + before, most, MSG_DONTWAIT);
    bytes->resize(before + (count > 0 ? static_cast<size_t>(count) : 0));
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Received::NothingYet;
    }
    return count > 0 ? Received::Some : Received::End;
}

std::optional<Message> MessageSocket::receive(Limit longestWait) {
    const SteadyClock::time_point end = SteadyClock::now() + longestWait.value_or(milliseconds(0));
    while (true) {
        std::optional<Message> message = receiveNow();
        const auto left = std::chrono::ceil<milliseconds>(end - SteadyClock::now());
        const int wait = longestWait ? forPoll(left) : kForEver;
        if (message || m_isGone || wait == 0) {
            return message;
        }
        waitFor(POLLIN, wait);
    }
}

std::optional<Message> MessageSocket::receiveNow() {
    m_isGone = m_isGone || !m_socket.isOurs();
    if (!receiveTo(kHeaderSize)) {
        return std::nullopt;
    }
    const uint64_t length = contentLength(m_incoming);
    if (length > m_longest || length > m_incoming.max_size() - kHeaderSize) {
        m_isGone = true;
        return std::nullopt;
    }
    if (!receiveTo(kHeaderSize + static_cast<size_t>(length))) {
        return std::nullopt;
    }
    Message message{static_cast<uint8_t>(m_incoming.front()), std::move(m_incoming)};
    message.content.erase(0, kHeaderSize);
    m_incoming.clear();
    return message;
}

bool MessageSocket::send(uint8_t kind, std::string_view content, Limit longestSilence) {
    queue(kind, content);
    return sendQueued(longestSilence);
}

bool MessageSocket::sendQueued(Limit longestSilence) {
    const int wait = longestSilence ? forPoll(*longestSilence) : kForEver;
    for (sendNow(); queued() > 0 && !m_isGone; sendNow()) {
        if (!waitFor(POLLOUT, wait)) {
            return false;
        }
    }
    return !m_isGone;
}

void MessageSocket::queue(uint8_t kind, std::string_view content) {
    const uint64_t length = content.size();
    char header[kHeaderSize];
    std::memcpy(header, &kind, sizeof kind);
    std::memcpy(header + sizeof kind, &length, sizeof length);
    m_outgoing.append(header, sizeof header).append(content);
}

size_t MessageSocket::sendNow() {
    const size_t before = queued();
    m_isGone =
        m_isGone || !m_socket.isOurs() || !base::sendNow(m_socket.number(), m_outgoing, &m_sent);
    const size_t taken = before - queued();
    if (m_sent > m_outgoing.size() / 2) {
        m_outgoing.erase(0, std::exchange(m_sent, 0));
    }
    return taken;
}

// Receives until the message has so many bytes, or no more bytes are available now.
bool MessageSocket::receiveTo(size_t size) {
    while (m_incoming.size() < size && !m_isGone) {
        const size_t step = std::min(size - m_incoming.size(), kReceiveStep);
        const Received received = base::receiveNow(m_socket.number(), step, &m_incoming);
        if (received == Received::NothingYet) {
            return false;
        }
        m_isGone = received == Received::End;
    }
    return m_incoming.size() >= size;
}

// False when the time has passed.
bool MessageSocket::waitFor(short event, int milliseconds) const {
    pollfd waiting = {m_socket.number(), event, 0};
    return poll(&waiting, 1, milliseconds) != 0;
}

}  // namespace base
