// A client of a device's control socket: a line to it, and what it answers.
#pragma once

#include <string>

#include "base/message_socket.h"

namespace tools {

struct Answer {
    enum class End {
        Done,       // it was carried out, and this is all
        Following,  // it was carried out, and more comes as it happens
        Refused,    // with the reason in `text`
        Ended,      // the device has ended
        Gone,       // so has the connection, before the answer was complete
        Late,       // not all has come in time
        Strange     // what answers there is no device
    };
    End end = End::Late;
    std::string text;        // of output, whole lines
    std::string frame = {};  // what has changed on the screen, for the command `frame`
    std::string lost = {};   // so many lines in front of it, in digits, were not taken in time
};

// One connection. It takes a line after the other, each behind the answer to the one before,
// until one is followed.
class Client {
public:
    using Limit = base::MessageSocket::Limit;

    // Takes the connected socket over.
    explicit Client(int connection);

    // Sends the line and receives the whole answer, so that the device need not wait for a slow
    // reader of it. Each message may be that long in coming.
    Answer ask(const std::string& line, Limit longestWait);

    // What follows. Waits for ever when no time is given.
    Answer more(Limit longestWait = {});

private:
    base::MessageSocket m_device;
    bool m_follows = false;
};

}  // namespace tools
