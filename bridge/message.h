// The protocol between an application and the page whose plug-in it is.
//
// The page is a script in a process of its own (simulator/page/), or in the user's browser, for
// which tools/page/ speaks. Messages travel through a base::MessageSocket, their content is items.
#pragma once

#include <cstdint>

namespace bridge {

// The longest content of a message to or from a page in a browser.
inline constexpr uint64_t kLongestMessage = uint64_t{32} << 20;

// So many questions of a page in a browser are served at a time, nested in each other.
inline constexpr int kMostOpenQuestions = 16;

// The kinds of messages, each with its items. A question's number is chosen by the page. Several
// questions can be open, and the last one may be answered first: a native method that handles
// events serves the questions that come meanwhile.
enum class MessageKind : uint8_t {
    // To the page.
    RunScript,     // text: file name; text: source. Only to a script.
    CallFunction,  // text: name; int: number of arguments; the arguments, each a text or null
    TimerDue,      // int: timer. Only to a script.
    Answer,        // int: the question's number; the items that the application wrote, or none
    Frame,         // no items: what ScreenChanges::next() gives

    // Questions of the page.
    MethodList,   // int: number
    MethodCall,   // int: number; text: name; int: number of arguments; the arguments, as above
    FrameWanted,  // bool: whole, because a page begins to look. Answered by one Frame as soon as
                  // something has changed. A second one before the answer changes nothing, except
                  // that the frame is whole if either asks for it.

    // From the page, without an answer.
    ConsoleLine,  // text: level, which is log, warn or error; text
    Problem,      // text: what went wrong in the script, and where
    Touch,        // text: down, move or up; int: x; int: y
    Key,          // bool: whether it is pressed; text: SDL's name of the key
    Typed,        // text
    SetTimer,     // int: timer; int: milliseconds. Only from a script, like all that follow.
    Broken,       // text: why the page cannot go on
    Idle          // nothing: the script has ended, and takes the next message
};

}  // namespace bridge
