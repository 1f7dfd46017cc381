// A WebSocket of a page in a browser.
#pragma once

#include <libsoup/soup.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace web {

// Closes a connection that sends too many messages, or does not answer pings.
class Socket {
public:
    struct Events {
        // Nothing, where the message is no text.
        std::function<void(const std::optional<std::string>& text)> onMessage;
        // May not destroy the socket.
        std::function<void()> onClosed;
    };

    Socket(SoupWebsocketConnection* connection, guint64 longestMessage, Events events);
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    // Once the connection is closed, these do nothing.
    void sendText(const std::string& text);
    void sendBinary(const std::string& bytes);
    void close(gushort code, const char* reason);

    bool isOpen() const;
    bool isClosed() const;  // what was sent before has arrived, or never will

    // Whether it was closed because of too many messages in a second.
    bool wasTooFast() const { return m_messages > kMostMessages; }

    // Whether the browser takes more. What the kernel does not take of a message is kept.
    bool isReady() const;

private:
    using Clock = std::chrono::steady_clock;

    static constexpr int kMostMessages = 1000;  // a second

    static void onMessage(SoupWebsocketConnection* connection, gint type, GBytes* message,
                          gpointer self) noexcept;
    static void onClosed(SoupWebsocketConnection* connection, gpointer self) noexcept;

    bool isTooFast();

    SoupWebsocketConnection* m_connection;
    Events m_events;
    Clock::time_point m_second;  // in which messages are counted
    int m_messages = 0;
};

}  // namespace web
