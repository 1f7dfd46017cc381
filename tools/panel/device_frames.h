// The pictures of a device's screen.
#pragma once

#include <chrono>
#include <string>

#include "device_connection.h"
#include "tools/web/frames.h"
#include "tools/web/source.h"

namespace panel {

// Asks the device for each picture; again where there is none, or no device.
class DeviceFrames {
public:
    DeviceFrames(std::string root, web::Frames::Sink sink);

    web::Frames& frames() { return m_frames; }

private:
    using Clock = std::chrono::steady_clock;

    void ask();
    void stop();
    void take(const base::Message& message);

    std::string m_root;
    DeviceConnection m_device;
    web::Source m_retry;
    Clock::time_point m_asked;
    web::Frames m_frames;
};

}  // namespace panel
