// The JavaScript engine, and the conversion of values.
//
// The engine reports errors with longjmp, which skips stack frames without running destructors. So
// files that include this one hold only numbers, pointers and the engine's own values. Objects with
// destructors are in conversation.cpp, which never calls the engine.
#pragma once

#include <duktape.h>

#include "simulator/page/conversation.h"

namespace tavsim {

// Creates an engine with limited memory for the script. Null when memory is exhausted.
duk_context* createEngine(duk_fatal_function onFatalError);

// A string, or null.
void pushText(duk_context* engine, EngineText text);

// The value at the index, which must be a string. Valid as long as it stays on the stack.
EngineText textAt(duk_context* engine, duk_idx_t index);

// Throws an error at the script's line, instead of a line of our own source files.
duk_ret_t throwError(duk_context* engine, duk_errcode_t code, const char* message);

// A hidden object with this name, which the script cannot reach; empty at first.
void pushHidden(duk_context* engine, const char* name);

// Functions for the page's script, by name. The magic number distinguishes functions that share one
// implementation.
struct Function {
    const char* name;
    duk_c_function function;
    duk_int_t argumentCount;
    duk_int_t magic;
};

// Adds the functions to the object on top.
template <duk_size_t count>
void addFunctions(duk_context* engine, const Function (&functions)[count]) {
    for (const Function& function : functions) {
        duk_push_c_function(engine, function.function, function.argumentCount);
        duk_set_magic(engine, -1, function.magic);
        duk_put_prop_string(engine, -2, function.name);
    }
}

}  // namespace tavsim
