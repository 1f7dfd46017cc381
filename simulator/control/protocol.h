// The protocol between a device and `tavsim ctl`.
#pragma once

#include <cstdint>

namespace tavsim {

// The kinds of messages on a control socket. A connection carries one command after the
// other, each behind the answer to the one before, until the journal is followed.
enum class ControlMessage : uint8_t {
    Command = 'c',  // from the client: one line, without a line feed

    // The answer: either this alone, with the reason in one line,
    Refused = 'r',
    // or these, any number of times,
    Output = 'o',     // lines to print, each with its line feed
    Following = 'f',  // everything so far was sent; new lines follow
    Frame = 'p',      // what has changed on the screen, as of ScreenChanges
    Lost = 'l',       // the number of lines that were dropped, because the client was too slow
    // and one of these.
    Done = 'd',  // the command was carried out, and this is all
    Ended = 'e'  // the device has ended
};

}  // namespace tavsim
