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

CommandResult resultOf(const char* command, bool isDone, const std::string& error) {
    return isDone ? CommandResult() : failed(std::string(command) + ": " + error);
}

using TouchFunction = bool (*)(const Point& point, std::string* error);

TouchFunction touchFunction(std::string_view name) {
    if (name == "down") {
        return touchDown;
    }
    if (name == "move") {
        return touchMove;
    }
    return touchUp;
}

CommandResult touchAt(const char* command, TouchFunction function, Words words) {
    Point point;
    words.takeNumbers(&point.x, &point.y);
    std::string error;
    const bool isDone = function(point, &error);
    return resultOf(command, isDone, error);
}

CommandResult pressKey(Words words) {
    const std::string_view action = words.next();
    std::string error;
    const std::optional<SDLKey> key = input::keyNamed(words.rest(), &error);
    if (!key) {
        return resultOf("key", false, error);
    }
    input::KeyStrokes strokes;
    if (action != "up") {
        strokes.press(*key);
    }
    if (action != "down") {
        strokes.release(*key);
    }
    const bool isDone = input::sendEvents(strokes.events(), noteOwnEvent, &error);
    return resultOf("key", isDone, error);
}

CommandResult typeText(Words words) {
    input::KeyStrokes strokes;
    std::string error;
    const bool isDone = strokes.type(std::string(words.rest()), &error) &&
                        input::sendEvents(strokes.events(), noteOwnEvent, &error);
    return resultOf("text", isDone, error);
}

CommandResult touch(Words words) {
    const TouchFunction function = touchFunction(words.next());
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
    std::string error;
    const bool isDone = dragFinger(from, to, time, &error);
    CommandResult result = resultOf("drag", isDone, error);
    result.lasts = time;
    return result;
}

CommandResult window(Words words) {
    std::string error;
    const bool isDone = words.next() == "minimize" ? minimizeWindow(&error) : restoreWindow(&error);
    return resultOf("window", isDone, error);
}

CommandResult quit(Words) {
    std::string error;
    const bool isDone = askToQuit(&error);
    return resultOf("quit", isDone, error);
}

constexpr Command kInputCommands[] = {
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

std::span<const Command> inputCommands() {
    return kInputCommands;
}

}  // namespace tavsim
