#include "plugin.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/socket_address.h"
#include "complain.h"

namespace page {
namespace {

constexpr size_t kMostOnTheWay = size_t{16} << 20;
constexpr mode_t kOthersRights = 0177;

}  // namespace

Plugin::Plugin(const Events& events)
    : m_events(events), m_connection(events.onMessage, events.onGone) {
}

Plugin::~Plugin() {
    if (!m_path.empty()) {
        unlink(m_path.c_str());
    }
}

bool Plugin::listen(const std::string& path, std::string* error) {
    m_listening = base::Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    unlink(path.c_str());
    const mode_t before = umask(kOthersRights);
    const bool isListening = base::SocketAddress(path).bindTo(m_listening.number()) &&
                             ::listen(m_listening.number(), 1) == 0;
    umask(before);
    if (!isListening) {
        *error = path + ": " + std::strerror(errno);
        return false;
    }
    m_path = path;
    m_newcomers.onReady(m_listening.number(), G_IO_IN, [this] { accept(); });
    return true;
}

bool Plugin::send(bridge::MessageKind kind, std::string_view content) {
    const size_t onTheWay = m_connection.queued() + m_earlySize;
    if (onTheWay > kMostOnTheWay || content.size() > bridge::kLongestMessage) {
        return false;
    }
    if (!m_hasCome) {
        m_early.push_back({static_cast<uint8_t>(kind), std::string(content)});
        m_earlySize += content.size();
        return true;
    }
    m_connection.queue(static_cast<uint8_t>(kind), content);
    return isThere();
}

void Plugin::refuse() {
    complainOnce("the application has sent what is no message, and is refused");
    m_connection.close();
    m_events.onGone();
}

void Plugin::hold(bool isHeld) {
    m_isHeld = isHeld;
    m_connection.hold(isHeld);
}

void Plugin::accept() {
    const int socket =
        accept4(m_listening.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket < 0) {
        return;
    }
    if (isThere() || !base::isOfThisUser(socket)) {
        complainOnce(isThere() ? "the page has its plug-in already, and another one is refused"
                               : "another user's program is refused");
        close(socket);
        return;
    }
    m_connection.adopt(socket, bridge::kLongestMessage);
    m_connection.hold(m_isHeld);
    m_hasCome = true;
    for (const base::Message& message : std::exchange(m_early, {})) {
        m_connection.queue(message.kind, message.content);
    }
    m_earlySize = 0;
    m_events.onCome();
}

}  // namespace page
