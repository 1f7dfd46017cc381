// What a device and `tavsim ctl` say to each other.
#ifndef TAV_SIMULATOR_CONTROL_PROTOCOL_H
#define TAV_SIMULATOR_CONTROL_PROTOCOL_H

#include <cstdint>

namespace tavsim {

// The kinds of messages on a control socket. A connection carries one command and its answer.
enum class ControlMessage : uint8_t {
    Command = 'c',  // from the client: one line, without a line feed

    // The answer: either this alone, with the reason in one line,
    Refused = 'r',
    // or these, any number of times,
    Output = 'o',     // lines to print, each with its line feed
    Following = 'f',  // all there was has been sent; more comes as it happens
    Lost = 'l',       // so many lines, in digits, that the client did not take in time
    // and one of these.
    Done = 'd',  // the command was carried out, and this is all
    Ended = 'e'  // the device has ended
};

}  // namespace tavsim

#endif
