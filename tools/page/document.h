// A document in a browser.
#pragma once

#include <libsoup/soup.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "bridge/message.h"
#include "frame_origin.h"
#include "helper/items.h"
#include "plugin.h"
#include "tools/web/frames.h"
#include "tools/web/socket.h"
#include "tools/web/source.h"

namespace page {

// Passes on what the document and the application tell each other unasked. While the browser takes
// nothing, nothing more is read from the application.
class Document {
public:
    // The function is called when the document's WebSocket is open, and when it is closed.
    Document(int number, Plugin& plugin, std::function<void()> onConnection);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    int number() const { return m_number; }

    // Once.
    void connect(SoupWebsocketConnection* connection);
    bool hasSocket() const { return m_socket != nullptr; }
    bool isConnected() const { return hasSocket() && m_socket->isOpen(); }
    bool isGone() const { return !hasSocket() || m_socket->isClosed(); }

    // The application calls a function. False where the message is malformed.
    bool call(const std::string& message);

    // The document has shown that its script is not in an endless loop.
    void hear() { m_heard = Clock::now(); }

    void show(const std::string& frame) { m_origin.take(frame); }

    // Tells the document why it has no plug-in any more.
    void end(const std::string& why);

private:
    using Clock = std::chrono::steady_clock;

    void take(const std::string& text);
    void tell(bridge::MessageKind kind, const helper::ItemWriter& items);
    void forgetCalls();
    void send();
    void ping();

    const int m_number;
    Plugin& m_plugin;
    const std::function<void()> m_onConnection;
    std::unique_ptr<web::Socket> m_socket;
    bool m_hasEnded = false;
    std::deque<std::string> m_calls;  // that the browser has not taken
    size_t m_size = 0;                // of them
    web::Source m_retry;
    web::Source m_pings;
    Clock::time_point m_heard;
    web::Frames m_frames;
    FrameOrigin m_origin;
};

}  // namespace page
