// A connection to a device's control socket, served by the main loop.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/message_socket.h"
#include "tools/web/source.h"

namespace panel {

// Never waits for the device.
class DeviceConnection {
public:
    enum class Opened {
        Yes,
        Crowded,  // too many others are waiting for the device
        None      // no device is running there
    };

    // Is called with each message. May close and open this connection, but not destroy it.
    using OnMessage = std::function<void(base::Message)>;
    // Is called when the device has closed the connection.
    using OnGone = std::function<void()>;

    DeviceConnection(OnMessage onMessage, OnGone onGone)
        : m_onMessage(std::move(onMessage)), m_onGone(std::move(onGone)) {}

    // Closes the connection that there was.
    Opened open(const std::string& root);
    void close();
    bool isOpen() const { return m_socket.has_value(); }

    // Where there is no connection, this does nothing.
    void send(std::string_view line);

    // While it is held, no message is taken, so that the device notices that its reader is slow.
    void hold(bool isHeld);

private:
    void receive();
    void transmit();

    OnMessage m_onMessage;
    OnGone m_onGone;
    std::optional<base::MessageSocket> m_socket;
    web::Source m_readable;
    web::Source m_writable;
};

}  // namespace panel
