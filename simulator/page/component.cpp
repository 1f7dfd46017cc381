// `component`: the application as the page's script sees it, with its native methods as members.
#include <cstring>

#include "simulator/page/script.h"

namespace tavsim {
namespace {

constexpr char kListeners[] = "listeners";  // the script's functions, by name
constexpr char kMethods[] = "methods";      // the functions that stand for native methods, by name

// The indices of the values that the engine pushes when it asks for a member.
constexpr duk_idx_t kTarget = 0;
constexpr duk_idx_t kName = 1;

// Puts the native method's reply on the stack, or throws its exception.
duk_ret_t finishCall(duk_context* engine) {
    const bool isException = readBool();
    const EngineText reply = readText();
    if (hasReadFailed()) {
        return throwError(engine, DUK_ERR_ERROR, "The application could not read the call");
    }
    if (isException) {
        return throwError(engine, DUK_ERR_ERROR, reply.bytes != nullptr ? reply.bytes : "");
    }
    pushText(engine, reply);
    return 1;
}

// Calls the native method whose name and arguments are the values on the stack.
duk_ret_t callMethod(duk_context* engine) {
    const duk_idx_t count = duk_get_top(engine);
    for (duk_idx_t index = 1; index < count; ++index) {
        if (!duk_is_null_or_undefined(engine, index)) {
            duk_to_string(engine, index);
        }
    }
    beginQuestion(bridge::MessageKind::MethodCall);
    addText(textAt(engine, 0));
    addInt(count - 1);
    for (duk_idx_t index = 1; index < count; ++index) {
        addText(textAt(engine, index));
    }
    askDevice();
    return finishCall(engine);
}

// component.call(name, arguments…).
duk_ret_t callByName(duk_context* engine) {
    duk_require_string(engine, 0);
    return callMethod(engine);
}

// component.NAME(arguments…): the function bears the method's name.
duk_ret_t callByOwnName(duk_context* engine) {
    duk_push_current_function(engine);
    duk_get_prop_string(engine, -1, "name");
    duk_insert(engine, 0);
    duk_pop(engine);
    return callMethod(engine);
}

// component.methods().
duk_ret_t listMethods(duk_context* engine) {
    beginQuestion(bridge::MessageKind::MethodList);
    askDevice();
    duk_push_array(engine);
    const int count = readInt();
    for (int index = 0; index < count; ++index) {
        const EngineText name = readText();
        if (hasReadFailed()) {
            break;
        }
        pushText(engine, name);
        duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(index));
    }
    return 1;
}

// component.on(name, function).
duk_ret_t listen(duk_context* engine) {
    duk_require_string(engine, 0);
    duk_require_function(engine, 1);
    pushHidden(engine, kListeners);
    duk_insert(engine, 0);
    duk_put_prop(engine, 0);
    return 0;
}

bool isListed(EngineText name) {
    beginQuestion(bridge::MessageKind::MethodList);
    askDevice();
    for (int left = readInt(); left > 0 && !hasReadFailed(); --left) {
        const EngineText listed = readText();
        if (listed.bytes != nullptr && listed.length == name.length &&
            std::memcmp(listed.bytes, name.bytes, name.length) == 0) {
            return true;
        }
    }
    return false;
}

bool hasOwn(duk_context* engine, duk_idx_t object, duk_idx_t key) {
    duk_dup(engine, key);
    duk_get_prop_desc(engine, object, 0);
    const bool has = !duk_is_undefined(engine, -1);
    duk_pop(engine);
    return has;
}

// The members of `component` are its own, and then the native methods that exist right now.
bool isNativeMethod(duk_context* engine) {
    const bool isName = duk_is_string(engine, kName) && !duk_is_symbol(engine, kName);
    return isName && !hasOwn(engine, kTarget, kName) && isListed(textAt(engine, kName));
}

// Pushes the function that stands for the native method, the same one each time.
void pushMethod(duk_context* engine) {
    pushHidden(engine, kMethods);
    duk_dup(engine, kName);
    if (duk_get_prop(engine, -2)) {
        return;
    }
    duk_pop(engine);
    duk_push_c_function(engine, callByOwnName, DUK_VARARGS);
    duk_push_string(engine, "name");
    duk_dup(engine, kName);
    duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
    duk_dup(engine, kName);
    duk_dup(engine, -2);
    duk_put_prop(engine, -4);
}

duk_ret_t hasMember(duk_context* engine) {
    duk_dup(engine, kName);
    const bool has = isNativeMethod(engine) || duk_has_prop(engine, kTarget);
    duk_push_boolean(engine, has);
    return 1;
}

duk_ret_t getMember(duk_context* engine) {
    if (isNativeMethod(engine)) {
        pushMethod(engine);
        return 1;
    }
    duk_dup(engine, kName);
    duk_get_prop(engine, kTarget);
    return 1;
}

constexpr Function kMembers[] = {
    {"methods", listMethods, 0, 0},
    {"call", callByName, DUK_VARARGS, 0},
    {"on", listen, 2, 0},
};

constexpr Function kTraps[] = {
    {"has", hasMember, 2, 0},
    {"get", getMember, 3, 0},
};

}  // namespace

void addComponent(duk_context* engine) {
    duk_push_object(engine);
    addFunctions(engine, kMembers);
    duk_push_object(engine);
    addFunctions(engine, kTraps);
    duk_push_proxy(engine, 0);
    duk_put_prop_string(engine, -2, "component");
}

void callListener(duk_context* engine) {
    pushHidden(engine, kListeners);
    pushText(engine, readText());
    duk_dup_top(engine);
    if (!duk_get_prop(engine, -3)) {
        duk_pop(engine);
        duk_push_string(engine, "nobody listens to ");
        duk_insert(engine, -2);
        duk_concat(engine, 2);
        writeConsole({"warn", 4}, textAt(engine, -1));
        return;
    }
    const int count = readInt();
    for (int left = count; left > 0; --left) {
        duk_require_stack(engine, 1);
        pushText(engine, readText());
    }
    duk_call(engine, count);
}

}  // namespace tavsim
