// The pictures of an application's screen.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace web {

// Asks for the next picture when the browser has shown the last one.
class Frames {
public:
    // Where the pictures are from.
    struct Origin {
        std::function<void()> ask;   // for one picture, which is to be handed over; may fail
        std::function<void()> stop;  // the next one asked for is to be whole
    };
    using Sink = std::function<void(const std::string& picture)>;

    Frames(Origin origin, Sink sink);

    void start();
    void stop();

    // What was asked for, as ScreenChanges makes it.
    void hand(const std::string& frame);

    // The last picture was shown.
    void shown();

private:
    using Clock = std::chrono::steady_clock;

    void judgeLine(Clock::duration time);

    Origin m_origin;
    Sink m_sink;
    bool m_isWanted = false;
    bool m_isUnderWay = false;  // a picture, to the browser
    bool m_isCompressed = false;
    size_t m_size = 0;  // of the picture that is under way
    Clock::time_point m_sent;
    // Pictures are compressed until then: at first, as the line is not known.
    Clock::time_point m_rawAgain = Clock::time_point::max();
    Clock::duration m_pause;  // before raw ones are tried again
};

}  // namespace web
