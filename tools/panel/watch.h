// Follows what happens on a device.
#pragma once

#include <functional>
#include <string>

#include "device_connection.h"

namespace panel {

class Watch {
public:
    struct Events {
        std::function<void()> opened;
        std::function<void(const std::string&)> lines;  // each with its line feed
        std::function<void(const std::string&)> lost;   // so many lines, in digits
        std::function<void(const std::string&)> ended;  // how, in words
        std::function<bool()> isReady;                  // whether more can be taken
    };

    // A device that is not there, or has ended, is waited for where `waits`.
    Watch(std::string root, bool waits, Events events);

private:
    void open();
    void take(const base::Message& message);
    void end(const std::string& how);

    std::string m_root;
    bool m_waits;
    Events m_events;
    DeviceConnection m_device;
    web::Source m_retry;
};

}  // namespace panel
