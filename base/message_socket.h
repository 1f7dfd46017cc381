// Stream sockets, and messages over them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/descriptor.h"

namespace base {

// Memory for what a socket has is allocated in such steps.
inline constexpr size_t kReceiveStep = size_t{64} * 1024;

// Sends without waiting what the other end takes of the bytes behind the first `sent`, and counts
// it there. False when it will take nothing more.
bool sendNow(int socket, const std::string& bytes, size_t* sent);

enum class Received { Some, NothingYet, End };

// Appends what is there without waiting, at most so many bytes.
Received receiveNow(int socket, size_t most, std::string* bytes);

// A message: its kind, a number that both ends agree on, and its content.
struct Message {
    uint8_t kind = 0;
    std::string content;
};

// One end of a connection. A message travels as its kind, the content's length as 8 bytes in the
// machine's order, and the content. The other end is not trusted: memory is allocated as the bytes
// arrive, and the connection counts as closed when a longer message than allowed is announced.
// Never reads beyond the end of the message that it returns, so that the socket can be polled.
class MessageSocket {
public:
    using Limit = std::optional<std::chrono::milliseconds>;

    static constexpr uint64_t kAnyLength = UINT64_MAX;

    // Takes ownership of the connected socket.
    explicit MessageSocket(int socket, uint64_t longestMessage = kAnyLength)
        : m_socket(socket), m_longest(longestMessage) {}

    int socket() const { return m_socket.number(); }

    // True, and true from then on, when the other end has closed the connection or broken the
    // protocol, or the program has closed our descriptor.
    bool isGone() const { return m_isGone; }

    // False when the program has closed our descriptor.
    bool isOurs() const { return m_socket.isOurs(); }

    // Waits for the next message, without limit when no time is given. Nothing when the connection
    // is closed, or no whole message has come in time.
    std::optional<Message> receive(Limit longestWait = {});

    // The same without waiting.
    std::optional<Message> receiveNow();

    // Waits until everything is sent, without limit when no time is given. False when the
    // connection is closed, or the other end has read nothing for that long.
    bool send(uint8_t kind, std::string_view content, Limit longestSilence = {});
    bool sendQueued(Limit longestSilence);

    // The same without waiting: sends as much as the socket accepts, and returns the number of
    // bytes.
    void queue(uint8_t kind, std::string_view content);
    size_t sendNow();
    size_t queued() const { return m_outgoing.size() - m_sent; }

private:
    bool receiveTo(size_t size);
    bool waitFor(short event, int milliseconds) const;

    Descriptor m_socket;
    uint64_t m_longest;
    bool m_isGone = false;
    std::string m_incoming;  // starts with the header
    std::string m_outgoing;
    size_t m_sent = 0;  // bytes of it
};

}  // namespace base
