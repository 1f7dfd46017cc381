// The protocol between the device and the process of its page.
//
// The device sends an event and then answers the page's questions until the page is idle again.
#pragma once

#include <cstdint>

namespace tavsim {

// The kinds of messages, each with its items.
enum class PageMessageKind : uint8_t {
    // Events, from the device.
    RunScript,     // text: file name; text: source
    CallFunction,  // text: name; int: number of arguments; the arguments, each a text or null
    TimerDue,      // int: timer

    // The device's answer to a question: the items that the application wrote, or none.
    Answer,

    // Questions, from the page.
    MethodList,  // nothing
    MethodCall,  // text: name; int: number of arguments; the arguments, each a text or null

    // From the page, without an answer.
    ConsoleLine,  // text: level, which is log, warn or error; text
    SetTimer,     // int: timer; int: milliseconds
    Problem,      // text: what went wrong in the script, and where
    Broken,       // text: why the page cannot go on
    Idle          // nothing
};

// Runs in the new process after the fork. It closes all descriptors of the application but its end
// of the connection and standard error, serves the device until the connection is closed, and ends.
[[noreturn]] void runPageProcess(int socket);

}  // namespace tavsim
