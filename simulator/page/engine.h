// The JavaScript engine, and values on their way into and out of it.
//
// The engine reports errors by jumping over the frames in between, without running destructors. So
// who includes this file holds numbers, pointers and the engine's own values only: whatever has a
// destructor lives in the conversation with the device, which never calls the engine.
#ifndef TAV_SIMULATOR_PAGE_ENGINE_H
#define TAV_SIMULATOR_PAGE_ENGINE_H

#include <duktape.h>

#include "simulator/page/conversation.h"

namespace tavsim {

// Null when there is no memory for it. What the script may use of that is limited.
duk_context* createEngine(duk_fatal_function onFatalError);

// A string, or null.
void pushText(duk_context* engine, EngineText text);

// The value at the index, which must be a string and stay where it is.
EngineText textAt(duk_context* engine, duk_idx_t index);

// Throws an error that belongs to the script's line, not to a file's of ours.
duk_ret_t throwError(duk_context* engine, duk_errcode_t code, const char* message);

// The object of that name that is kept out of the script's reach; an empty one at first.
void pushHidden(duk_context* engine, const char* name);

// What the page's script finds, by name. The magic number tells functions apart that are one here.
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

#endif
