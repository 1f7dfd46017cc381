// The pictures of a device's screen.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "device_connection.h"

namespace panel {

// Asks the device for the next picture when the browser has shown the last one.
class Frames {
public:
    using Sink = std::function<void(const std::string& picture)>;

    Frames(std::string root, Sink sink);

    void start();
    void stop();

    // The last picture was shown.
    void shown();

private:
    using Clock = std::chrono::steady_clock;

    void ask();
    void take(const base::Message& message);
    void hand(const std::string& frame);
    void judgeLine(Clock::duration time);

    std::string m_root;
    Sink m_sink;
    DeviceConnection m_device;
    Source m_retry;
    bool m_isWanted = false;
    bool m_isUnderWay = false;  // a picture, to the browser
    bool m_isCompressed = false;
    size_t m_size = 0;  // of the picture that is under way
    Clock::time_point m_asked;
    Clock::time_point m_sent;
    // Pictures are compressed until then: at first, as the line is not known.
    Clock::time_point m_rawAgain = Clock::time_point::max();
    Clock::duration m_pause;  // before raw ones are tried again
};

}  // namespace panel
