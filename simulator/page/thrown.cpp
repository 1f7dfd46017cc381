// Uncaught exceptions of a script.
#include "simulator/page/script.h"

namespace tavsim {
namespace {

constexpr char kScript[] = "script";
constexpr char kErrorName[] = "name";

constexpr char kIndescribableText[] = "an exception that cannot be described";
constexpr EngineText kIndescribable = {kIndescribableText, sizeof kIndescribableText - 1};

// The line of the last throw of a value that is not an Error and so has no line itself; 0: unknown.
int g_thrownLine = 0;

// The engine calls this with each value that is thrown.
duk_ret_t rememberThrow(duk_context* engine) {
    if (duk_is_error(engine, 0)) {
        return 1;
    }
    constexpr duk_int_t kThrowing = -2;
    g_thrownLine = 0;
    duk_inspect_callstack_entry(engine, kThrowing);
    if (duk_is_object(engine, -1)) {
        duk_get_prop_string(engine, -1, "lineNumber");
        g_thrownLine = duk_to_int(engine, -1);
    }
    duk_set_top(engine, 1);
    return 1;
}

constexpr Function kEngineHooks[] = {{"errThrow", rememberThrow, 1, 0}};

void pushScriptName(duk_context* engine) {
    pushHidden(engine, kScript);
    duk_get_prop_string(engine, -1, kErrorName);
    duk_remove(engine, -2);
}

// Each returns a description of the thrown value, the only one on the stack.

duk_ret_t describe(duk_context* engine, void*) {
    const bool isError = duk_is_error(engine, 0);
    if (isError) {
        duk_get_prop_string(engine, 0, "fileName");
        duk_get_prop_string(engine, 0, "lineNumber");
    } else {
        pushScriptName(engine);
        duk_push_int(engine, g_thrownLine);
    }
    duk_push_sprintf(engine, "%s:%s: %s%s", duk_to_string(engine, 1), duk_to_string(engine, 2),
                     isError ? "" : "uncaught ", duk_to_string(engine, 0));
    return 1;
}

// For objects whose description throws itself.
duk_ret_t describeBriefly(duk_context* engine, void*) {
    pushScriptName(engine);
    duk_push_sprintf(engine, "%s: %s", duk_to_string(engine, -1), duk_safe_to_string(engine, 0));
    return 1;
}

}  // namespace

void watchThrows(duk_context* engine) {
    duk_get_prop_string(engine, -1, "Duktape");
    addFunctions(engine, kEngineHooks);
    duk_pop(engine);
}

void nameScript(duk_context* engine) {
    pushHidden(engine, kScript);
    duk_dup(engine, -2);
    duk_put_prop_string(engine, -2, kErrorName);
    duk_pop(engine);
}

void reportThrown(duk_context* engine) {
    const bool isDescribed =
        duk_safe_call(engine, describe, nullptr, 1, 1) == DUK_EXEC_SUCCESS ||
        duk_safe_call(engine, describeBriefly, nullptr, 1, 1) == DUK_EXEC_SUCCESS;
    beginMessage(bridge::MessageKind::Problem);
    addText(isDescribed ? textAt(engine, -1) : kIndescribable);
    sendMessage();
}

}  // namespace tavsim
