// What changes on the application's screen, for a program that shows it elsewhere.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "screen/frames.h"
#include "screen/picture.h"

namespace screen {

// Keeps what was shown last while somebody goes on asking.
class ScreenChanges {
public:
    // The parts that differ from what the last call returned, at first all: a line of JSON,
    // {"width":480,"height":800,"parts":[[x,y,width,height],…]}, and then the pixels of each part,
    // rows from the top, each pixel red, green and blue. Nothing, with a line in `error`, while
    // nothing has changed or there is no picture.
    std::optional<std::string> next(std::string* error);

    // The next call returns everything.
    void forget();

    // Forgets when nobody has asked for some seconds. To be called again and again.
    void forgetWhenUnasked();

private:
    using SteadyClock = std::chrono::steady_clock;

    std::optional<FrameWatch> m_watch;  // while what was shown is kept
    std::optional<Picture> m_shown;
    SteadyClock::time_point m_asked;
    SteadyClock::time_point m_seenUnchanged;
};

}  // namespace screen
