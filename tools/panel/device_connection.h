// A connection to a device's control socket.
#pragma once

#include <string>
#include <string_view>

#include "tools/web/connection.h"

namespace panel {

class DeviceConnection : public web::Connection {
public:
    enum class Opened {
        Yes,
        Crowded,  // too many others are waiting for the device
        None      // no device is running there
    };

    using Connection::Connection;

    // Closes the connection that there was.
    Opened open(const std::string& root);

    void send(std::string_view line);
};

}  // namespace panel
