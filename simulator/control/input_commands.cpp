// Commands for what the user does: keys, touches, the window.
#include "input/events.h"
#include "input/keyboard.h"
#include "simulator/control/command.h"
#include "simulator/input/origin.h"
#include "simulator/input/touch.h"
#include "simulator/input/window.h"
#include "simulator/language/pattern.h"

namespace tavsim {
namespace {

// What came of the input, which the function sends and says why it cannot.
template <typename Function>
CommandResult sent(const char* command, const Function& send) {
    std::string error;
    return send(&error) ? CommandResult() : failed(std::string(command) + ": " + error);
}

CommandResult sent(const char* command, const input::KeyStrokes& strokes) {
    return sent(command, [&](std::string* error) {
        return input::sendEvents(strokes.events(), noteOwnEvent, error);
    });
}

using TouchFunction = bool (*)(const Point& point, std::string* error);

CommandResult touchAt(const char* command, TouchFunction function, Words words) {
    Point point;
    words.takeNumbers(&point.x, &point.y);
    return sent(command, [&](std::string* error) { return function(point, error); });
}

CommandResult pressKey(Words words) {
    const std::string_view action = words.next();
    std::string error;
    const std::optional<SDLKey> key = input::keyNamed(words.rest(), &error);
    if (!key) {
        return failed("key: " + error);
    }
    input::KeyStrokes strokes;
    if (action != "up") {
        strokes.press(*key);
    }
    if (action != "down") {
        strokes.release(*key);
    }
    return sent("key", strokes);
}

CommandResult typeText(Words words) {
    input::KeyStrokes strokes;
    std::string error;
    const bool isTyped = strokes.type(std::string(words.rest()), &error);
    return isTyped ? sent("text", strokes) : failed("text: " + error);
}

CommandResult touch(Words words) {
    const std::string_view action = words.next();
    const TouchFunction function = action == "down"   ? touchDown
                                   : action == "move" ? touchMove
                                                      : touchUp;
    return touchAt("touch", function, words);
}

CommandResult tap(Words words) {
    return touchAt("tap", tapScreen, words);
}

CommandResult drag(Words words) {
    Point from;
    Point to;
    words.takeNumbers(&from.x, &from.y, &to.x, &to.y);
    const Milliseconds time = readTime(words.next()).value_or(0);
    CommandResult result =
        sent("drag", [&](std::string* error) { return dragFinger(from, to, time, error); });
    result.lasts = time;
    return result;
}

CommandResult window(Words words) {
    return sent("window", words.next() == "minimize" ? minimizeWindow : restoreWindow);
}

CommandResult quit(Words) {
    return sent("quit", askToQuit);
}

constexpr Command kInputRows[] = {
    {"key", "down|up|tap NAME", "Press a key, release it, or both; named as SDL_GetKeyName() does.",
     pressKey},
    {"text", "TEXT", "Type the text, key by key.", typeText},
    {"touch", "down|move|up X Y", "Touch the screen, move the finger, or take it away.", touch},
    {"tap", "X Y", "Touch the screen for a moment.", tap},
    {"drag", "X Y X Y [TIME]", "Drag a finger from one point to the other, within that time.",
     drag},
    {"window", "minimize|restore", "Put the application's window away, or show it again.", window},
    {"quit", "", "Send the application SDL's quit event.", quit},
};

}  // namespace

constinit const std::span<const Command> kInputCommands = kInputRows;

}  // namespace tavsim
