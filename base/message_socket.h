// Whole messages over a socket.
#ifndef TAV_BASE_MESSAGE_SOCKET_H
#define TAV_BASE_MESSAGE_SOCKET_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/descriptor.h"

namespace base {

// What a message is about, as a number that its two ends agree on, and what it says.
struct Message {
    uint8_t kind = 0;
    std::string content;
};

// One end of a connection. A message travels as its kind, the content's length as 8 bytes in the
// machine's order, and the content. Nothing is believed of what comes: memory is taken as the bytes
// arrive, and an end that announces a longer message than is allowed counts as gone. Never reads
// further than to the end of the message that it hands out, so that the socket can be polled.
class MessageSocket {
public:
    using Limit = std::optional<std::chrono::milliseconds>;

    static constexpr uint64_t kAnyLength = UINT64_MAX;

    // Takes the connected socket over.
    explicit MessageSocket(int socket, uint64_t longestMessage = kAnyLength)
        : m_socket(socket), m_longest(longestMessage) {}

    int socket() const { return m_socket.number(); }

    // True for good when the other end has closed the connection or breaks the rules, or the
    // process has lost the socket.
    bool isGone() const { return m_isGone; }

    // False when the process has lost the socket.
    bool isOurs() const { return m_socket.isOurs(); }

    // Waits for the next message, for ever when no time is given. Without a value the other end is
    // gone, or nothing whole has come in time.
    std::optional<Message> receive(Limit longestWait = {});

    // The same without waiting, for what is there.
    std::optional<Message> receiveNow();

    // Waits until all is sent, for ever when no time is given. False when the other end is gone, or
    // has taken nothing for that long.
    bool send(uint8_t kind, std::string_view content, Limit longestSilence = {});
    bool sendQueued(Limit longestSilence);

    // The same without waiting: sends what the other end takes, and tells how many bytes it took.
    void queue(uint8_t kind, std::string_view content);
    size_t sendNow();
    size_t queued() const { return m_outgoing.size() - m_sent; }

private:
    bool receiveTo(size_t size);
    bool waitFor(short event, int milliseconds) const;

    Descriptor m_socket;
    uint64_t m_longest;
    bool m_isGone = false;
    std::string m_incoming;  // from the header on
    std::string m_outgoing;
    size_t m_sent = 0;  // bytes of it
};

}  // namespace base

#endif
