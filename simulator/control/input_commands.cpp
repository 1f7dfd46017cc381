// Commands for what the user does: keys, touches, the window.
#include "simulator/control/command_functions.h"
#include "simulator/control/pattern.h"
#include "simulator/input/events.h"
#include "simulator/input/keyboard.h"
#include "simulator/input/touch.h"
#include "simulator/input/window.h"

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
    return name == "up" ? touchUp : nullptr;
}

CommandOutcome touchAt(const char* command, TouchFunction function, Words words) {
    Point point;
    if (function == nullptr || !words.areNumbers(&point.x, &point.y)) {
        return std::nullopt;
    }
    std::string error;
    const bool isDone = function(point, &error);
    return resultOf(command, isDone, error);
}

}  // namespace

CommandOutcome pressKey(Words words) {
    const std::string_view action = words.next();
    const bool isPressed = action == "down" || action == "tap";
    const bool isReleased = action == "up" || action == "tap";
    if ((!isPressed && !isReleased) || words.isEmpty()) {
        return std::nullopt;
    }
    std::string error;
    const std::optional<SDLKey> key = keyNamed(words.rest(), &error);
    if (!key) {
        return resultOf("key", false, error);
    }
    KeyStrokes strokes;
    if (isPressed) {
        strokes.press(*key);
    }
    if (isReleased) {
        strokes.release(*key);
    }
    const bool isDone = sendEvents(strokes.events(), &error);
    return resultOf("key", isDone, error);
}

CommandOutcome typeText(Words words) {
    if (words.isEmpty()) {
        return std::nullopt;
    }
    KeyStrokes strokes;
    std::string error;
    const bool isDone =
        strokes.type(std::string(words.rest()), &error) && sendEvents(strokes.events(), &error);
    return resultOf("text", isDone, error);
}

CommandOutcome touch(Words words) {
    const TouchFunction function = touchFunction(words.next());
    return touchAt("touch", function, words);
}

CommandOutcome tap(Words words) {
    return touchAt("tap", tapScreen, words);
}

CommandOutcome drag(Words words) {
    Point from;
    Point to;
    if (!words.takeNumbers(&from.x, &from.y, &to.x, &to.y)) {
        return std::nullopt;
    }
    Milliseconds time = 0;
    if (!words.isEmpty()) {
        const std::optional<Milliseconds> given = readTime(words.next());
        if (!given || !words.isEmpty()) {
            return std::nullopt;
        }
        time = *given;
    }
    std::string error;
    CommandResult result = resultOf("drag", dragFinger(from, to, time, &error), error);
    result.lasts = time;
    return result;
}

CommandOutcome window(Words words) {
    const std::string_view action = words.next();
    if ((action != "minimize" && action != "restore") || !words.isEmpty()) {
        return std::nullopt;
    }
    std::string error;
    const bool isDone = action == "minimize" ? minimizeWindow(&error) : restoreWindow(&error);
    return resultOf("window", isDone, error);
}

CommandOutcome quit(Words words) {
    if (!words.isEmpty()) {
        return std::nullopt;
    }
    std::string error;
    const bool isDone = askToQuit(&error);
    return resultOf("quit", isDone, error);
}

}  // namespace tavsim
