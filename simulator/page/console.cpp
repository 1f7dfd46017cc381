// console.log, console.warn and console.error.
#include "simulator/page/script.h"

namespace tavsim {
namespace {

enum Level { kLog, kWarn, kError };

constexpr EngineText kLevels[] = {{"log", 3}, {"warn", 4}, {"error", 5}};

// Prints the arguments with spaces between them; the magic number is the level.
duk_ret_t print(duk_context* engine) {
    duk_push_string(engine, " ");
    duk_insert(engine, 0);
    duk_join(engine, duk_get_top(engine) - 1);
    writeConsole(kLevels[duk_get_current_magic(engine)], textAt(engine, -1));
    return 0;
}

constexpr Function kConsole[] = {
    {"log", print, DUK_VARARGS, kLog},
    {"warn", print, DUK_VARARGS, kWarn},
    {"error", print, DUK_VARARGS, kError},
};

}  // namespace

void addConsole(duk_context* engine) {
    duk_push_object(engine);
    addFunctions(engine, kConsole);
    duk_put_prop_string(engine, -2, "console");
}

void writeConsole(EngineText level, EngineText line) {
    beginMessage(bridge::MessageKind::ConsoleLine);
    addText(level);
    addText(line);
    sendMessage();
}

}  // namespace tavsim
