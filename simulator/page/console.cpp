// console.log, console.warn and console.error.
#include "simulator/page/script.h"

namespace tavsim {
namespace {

enum Stream { kStandardOutput, kStandardError };

// Prints the arguments with spaces between them; the magic number is the stream.
duk_ret_t print(duk_context* engine) {
    duk_push_string(engine, " ");
    duk_insert(engine, 0);
    duk_join(engine, duk_get_top(engine) - 1);
    writeConsole(duk_get_current_magic(engine) == kStandardError, textAt(engine, -1));
    return 0;
}

constexpr Function kConsole[] = {
    {"log", print, DUK_VARARGS, kStandardOutput},
    {"warn", print, DUK_VARARGS, kStandardError},
    {"error", print, DUK_VARARGS, kStandardError},
};

}  // namespace

void addConsole(duk_context* engine) {
    duk_push_object(engine);
    addFunctions(engine, kConsole);
    duk_put_prop_string(engine, -2, "console");
}

void writeConsole(bool toStandardError, EngineText line) {
    beginMessage(PageMessageKind::ConsoleLine);
    addBool(toStandardError);
    addText(line);
    sendMessage();
}

}  // namespace tavsim
