// The application that is the page's plug-in.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "base/message_socket.h"
#include "bridge/message.h"
#include "tools/web/connection.h"
#include "tools/web/source.h"

namespace page {

// Listens on a Unix socket, for one application of this user at a time. Never waits for it.
class Plugin {
public:
    struct Events {
        std::function<void()> onCome;
        std::function<void(const base::Message&)> onMessage;
        std::function<void()> onGone;
    };

    explicit Plugin(const Events& events);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    // False, with the reason, where it cannot be listened there.
    bool listen(const std::string& path, std::string* error);

    bool isThere() const { return m_connection.isOpen(); }

    // What is sent before the first application comes waits for it. False where so much is on its
    // way that the application evidently takes nothing, where the message is too long, and when the
    // application has gone.
    bool send(bridge::MessageKind kind, std::string_view content);

    // Refuses an application that breaks the protocol.
    void refuse();

    // While it is held, no message is read, so that the application notices that its reader is
    // slow.
    void hold(bool isHeld);

private:
    void accept();

    Events m_events;
    std::string m_path;
    base::Descriptor m_listening;
    web::Source m_newcomers;
    web::Connection m_connection;
    bool m_hasCome = false;
    std::vector<base::Message> m_early;
    size_t m_earlySize = 0;
    bool m_isHeld = false;
};

}  // namespace page
