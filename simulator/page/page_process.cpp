#include "simulator/page/page_process.h"

#include <duktape.h>
#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "helper/items.h"
#include "simulator/page/engine_text.h"
#include "simulator/page/page_channel.h"

// The engine reports errors by jumping over the frames in between, without running destructors.
// So a function that owns memory gives it back before it does what may raise one.

namespace tavsim {

namespace {

constexpr int kSocket = 3;  // where the page's end of the channel is after the fork

// What the engine's global stash holds, out of the script's reach.
constexpr char kListeners[] = "listeners";  // function by name
constexpr char kTimers[] = "timers";    // by number: [interval or kOnce, function, arguments…]
constexpr char kMethods[] = "methods";  // the functions that stand for native methods, by name

constexpr int kOnce = 0;
constexpr int kShortestDelay = 1;  // so that a script's timers always let the clock move on

// What the script may use; far less than would trouble the machine that the application runs on.
constexpr size_t kMemoryLimit = size_t{256} * 1024 * 1024;

// Where in a timer's array its parts are.
constexpr duk_uarridx_t kTimerInterval = 0;
constexpr duk_uarridx_t kTimerFunction = 1;

// The process has one page.
PageChannel* g_channel = nullptr;
std::string g_scriptName;
int g_lastTimer = 0;
size_t g_memoryInUse = 0;

// Line of the last throw of a value that is no Error, and so does not know it itself; 0: unknown.
int g_thrownLine = 0;

void* reallocate(void*, void* block, duk_size_t size) {
    const size_t before = malloc_usable_size(block);
    if (g_memoryInUse - before + size > kMemoryLimit) {
        return nullptr;
    }
    void* moved = std::realloc(block, size);
    if (moved != nullptr || size == 0) {
        g_memoryInUse += malloc_usable_size(moved) - before;
    }
    return moved;
}

void* allocate(void* data, duk_size_t size) {
    return reallocate(data, nullptr, size);
}

void release(void*, void* block) {
    g_memoryInUse -= malloc_usable_size(block);
    std::free(block);
}

[[noreturn]] void end() {
    _exit(EXIT_SUCCESS);
}

void tell(PageMessageKind kind, const helper::ItemWriter& items) {
    if (!g_channel->send(kind, items.message())) {
        end();
    }
}

PageMessage receive() {
    std::optional<PageMessage> message = g_channel->receive();
    if (!message) {
        end();
    }
    return *std::move(message);
}

// Puts a question to the application; the answer's items.
std::string ask(PageMessageKind question, const helper::ItemWriter& items) {
    tell(question, items);
    return receive().items;
}

void pushText(duk_context* engine, helper::Text text) {
    if (!text) {
        duk_push_null(engine);
        return;
    }
    const std::string engineText = toEngineText(*text);
    duk_push_lstring(engine, engineText.data(), engineText.size());
}

// The value at the index, which must be a string.
std::string textAt(duk_context* engine, duk_idx_t index) {
    duk_size_t length = 0;
    const char* text = duk_get_lstring(engine, index, &length);
    return fromEngineText({text, length});
}

// An Error that belongs to the script's line, not to this file's.
void pushError(duk_context* engine, const char* message) {
    duk_push_error_object_raw(engine, DUK_ERR_ERROR, nullptr, 0, "%s", message);
}

void pushStashed(duk_context* engine, const char* name) {
    duk_push_global_stash(engine);
    duk_get_prop_string(engine, -1, name);
    duk_remove(engine, -2);
}

void writeConsole(bool toStandardError, const std::string& text) {
    helper::ItemWriter items;
    items.writeBool(toStandardError);
    items.writeText(text);
    tell(PageMessageKind::ConsoleLine, items);
}

// console.log, console.warn, console.error; the magic number tells which.
duk_ret_t printValues(duk_context* engine) {
    duk_push_string(engine, " ");
    duk_insert(engine, 0);
    duk_join(engine, duk_get_top(engine) - 1);
    writeConsole(duk_get_current_magic(engine) != 0, textAt(engine, -1));
    return 0;
}

// setTimeout, setInterval(function, delay, arguments…).
duk_ret_t setTimer(duk_context* engine) {
    const bool repeats = duk_get_current_magic(engine) != 0;
    duk_require_function(engine, 0);
    const int asked = duk_get_top(engine) > 1 ? duk_to_int(engine, 1) : 0;
    const int delay = asked < kShortestDelay ? kShortestDelay : asked;
    const int timer = ++g_lastTimer;

    const duk_idx_t arguments = duk_get_top(engine);
    pushStashed(engine, kTimers);
    duk_push_array(engine);
    duk_push_int(engine, repeats ? delay : kOnce);
    duk_put_prop_index(engine, -2, kTimerInterval);
    duk_dup(engine, 0);
    duk_put_prop_index(engine, -2, kTimerFunction);
    for (duk_idx_t argument = 2; argument < arguments; ++argument) {
        duk_dup(engine, argument);
        duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(argument));
    }
    duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(timer));

    helper::ItemWriter items;
    items.writeInt(timer);
    items.writeInt(delay);
    tell(PageMessageKind::SetTimer, items);
    duk_push_int(engine, timer);
    return 1;
}

// clearTimeout, clearInterval. The device still lets the timer fall due; nobody is there then.
duk_ret_t clearTimer(duk_context* engine) {
    pushStashed(engine, kTimers);
    duk_dup(engine, 0);
    duk_del_prop(engine, -2);
    return 0;
}

// Calls the native method whose name and arguments are the values on the stack. Leaves the reply
// there, or the exception as an Error, and answers which.
bool performCall(duk_context* engine) {
    helper::ItemWriter items;
    const duk_idx_t count = duk_get_top(engine);
    items.writeText(textAt(engine, 0));
    items.writeInt(count - 1);
    for (duk_idx_t index = 1; index < count; ++index) {
        items.writeText(duk_is_string(engine, index) ? helper::Text(textAt(engine, index))
                                                     : std::nullopt);
    }
    const std::string answer = ask(PageMessageKind::MethodCall, items);
    helper::ItemReader reader(answer);
    const bool isException = reader.readBool();
    const helper::Text text = reader.readText();
    if (!reader.isSuccessful()) {
        pushError(engine, "The application could not read the call");
        return false;
    }
    if (isException) {
        pushError(engine, toEngineText(text.value_or("")).c_str());
        return false;
    }
    pushText(engine, text);
    return true;
}

duk_ret_t callMethod(duk_context* engine) {
    for (duk_idx_t index = 1; index < duk_get_top(engine); ++index) {
        if (!duk_is_null_or_undefined(engine, index)) {
            duk_to_string(engine, index);
        }
    }
    return performCall(engine) ? 1 : duk_throw(engine);
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
    const std::string answer = ask(PageMessageKind::MethodList, {});
    helper::ItemReader reader(answer);
    const duk_idx_t names = duk_push_array(engine);
    const int count = reader.readInt();
    for (int index = 0; index < count; ++index) {
        const helper::Text name = reader.readText();
        if (!reader.isSuccessful()) {
            break;
        }
        pushText(engine, name);
        duk_put_prop_index(engine, names, static_cast<duk_uarridx_t>(index));
    }
    return 1;
}

// component.on(name, function).
duk_ret_t listen(duk_context* engine) {
    duk_require_string(engine, 0);
    duk_require_function(engine, 1);
    pushStashed(engine, kListeners);
    duk_insert(engine, 0);
    duk_put_prop(engine, 0);
    return 0;
}

bool isListed(const std::string& name) {
    const std::string answer = ask(PageMessageKind::MethodList, {});
    helper::ItemReader reader(answer);
    for (int left = reader.readInt(); left > 0 && reader.isSuccessful(); --left) {
        if (reader.readText() == helper::Text(name)) {
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

// Leaves the function that stands for the native method whose name is at the index, the same one
// each time.
void pushMethod(duk_context* engine, duk_idx_t name) {
    pushStashed(engine, kMethods);
    duk_dup(engine, name);
    if (duk_get_prop(engine, -2)) {
        return;
    }
    duk_pop(engine);
    duk_push_c_function(engine, callByOwnName, DUK_VARARGS);
    duk_push_string(engine, "name");
    duk_dup(engine, name);
    duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
    duk_dup(engine, name);
    duk_dup(engine, -2);
    duk_put_prop(engine, -4);
}

// The members of `component` are its own, and then the native methods that exist right now. The
// engine asks for them with these on the stack.
constexpr duk_idx_t kTarget = 0;
constexpr duk_idx_t kName = 1;

bool isNativeMethod(duk_context* engine) {
    const bool isName = duk_is_string(engine, kName) && !duk_is_symbol(engine, kName);
    return isName && !hasOwn(engine, kTarget, kName) && isListed(textAt(engine, kName));
}

duk_ret_t hasMember(duk_context* engine) {
    duk_dup(engine, kName);
    const bool has = isNativeMethod(engine) || duk_has_prop(engine, kTarget);
    duk_push_boolean(engine, has);
    return 1;
}

duk_ret_t getMember(duk_context* engine) {
    if (isNativeMethod(engine)) {
        pushMethod(engine, kName);
        return 1;
    }
    duk_dup(engine, kName);
    duk_get_prop(engine, kTarget);
    return 1;
}

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

struct Function {
    const char* name;
    duk_c_function function;
    duk_int_t argumentCount;
    duk_int_t magic;
};

constexpr Function kConsole[] = {
    {"log", printValues, DUK_VARARGS, 0},
    {"warn", printValues, DUK_VARARGS, 1},
    {"error", printValues, DUK_VARARGS, 1},
};

constexpr Function kGlobals[] = {
    {"setTimeout", setTimer, DUK_VARARGS, 0},
    {"setInterval", setTimer, DUK_VARARGS, 1},
    {"clearTimeout", clearTimer, 1, 0},
    {"clearInterval", clearTimer, 1, 0},
};

constexpr Function kComponent[] = {
    {"methods", listMethods, 0, 0},
    {"call", callByName, DUK_VARARGS, 0},
    {"on", listen, 2, 0},
};

constexpr Function kComponentTraps[] = {
    {"has", hasMember, 2, 0},
    {"get", getMember, 3, 0},
};

constexpr Function kEngineHooks[] = {{"errThrow", rememberThrow, 1, 0}};

// Adds the functions to the object on top.
template <size_t count>
void addFunctions(duk_context* engine, const Function (&functions)[count]) {
    for (const Function& function : functions) {
        duk_push_c_function(engine, function.function, function.argumentCount);
        duk_set_magic(engine, -1, function.magic);
        duk_put_prop_string(engine, -2, function.name);
    }
}

duk_ret_t furnishPage(duk_context* engine, void*) {
    duk_push_global_stash(engine);
    for (const char* name : {kListeners, kTimers, kMethods}) {
        duk_push_bare_object(engine);
        duk_put_prop_string(engine, -2, name);
    }

    duk_push_global_object(engine);
    addFunctions(engine, kGlobals);

    duk_push_object(engine);
    addFunctions(engine, kConsole);
    duk_put_prop_string(engine, -2, "console");

    duk_push_object(engine);
    addFunctions(engine, kComponent);
    duk_push_object(engine);
    addFunctions(engine, kComponentTraps);
    duk_push_proxy(engine, 0);
    duk_put_prop_string(engine, -2, "component");

    duk_get_prop_string(engine, -1, "Duktape");
    addFunctions(engine, kEngineHooks);
    return 0;
}

void runScript(duk_context* engine, helper::ItemReader* items) {
    g_scriptName = items->readString();
    pushText(engine, items->readText());
    pushText(engine, g_scriptName);
    duk_compile(engine, 0);
    duk_call(engine, 0);
}

void callFunction(duk_context* engine, helper::ItemReader* items) {
    const helper::Text name = items->readText();
    pushStashed(engine, kListeners);
    pushText(engine, name);
    if (!duk_get_prop(engine, -2)) {
        const std::string line = "nobody listens to " + std::string(name.value_or(""));
        writeConsole(true, line);
        return;
    }
    const int count = items->readInt();
    for (int left = count; left > 0; --left) {
        duk_require_stack(engine, 1);
        pushText(engine, items->readText());
    }
    duk_call(engine, count);
}

void fireTimer(duk_context* engine, helper::ItemReader* items) {
    const int timer = items->readInt();
    const auto key = static_cast<duk_uarridx_t>(timer);
    pushStashed(engine, kTimers);
    if (!duk_get_prop_index(engine, -1, key)) {
        return;
    }
    const duk_idx_t parts = duk_get_top_index(engine);
    duk_get_prop_index(engine, parts, kTimerInterval);
    const int interval = duk_get_int(engine, -1);
    if (interval == kOnce) {
        duk_del_prop_index(engine, parts - 1, key);
    } else {
        helper::ItemWriter again;
        again.writeInt(timer);
        again.writeInt(interval);
        tell(PageMessageKind::SetTimer, again);
    }
    const auto count = static_cast<duk_uarridx_t>(duk_get_length(engine, parts));
    for (duk_uarridx_t part = kTimerFunction; part < count; ++part) {
        duk_require_stack(engine, 1);
        duk_get_prop_index(engine, parts, part);
    }
    duk_call(engine, static_cast<duk_idx_t>(count - kTimerFunction - 1));
}

duk_ret_t handleEvent(duk_context* engine, void* data) {
    const auto* event = static_cast<const PageMessage*>(data);
    helper::ItemReader items(event->items);
    switch (event->kind) {
    case PageMessageKind::RunScript:
        runScript(engine, &items);
        break;
    case PageMessageKind::CallFunction:
        callFunction(engine, &items);
        break;
    case PageMessageKind::TimerDue:
        fireTimer(engine, &items);
        break;
    default:
        break;
    }
    return 0;
}

// Replaces what was thrown by its description: file, line and message.
duk_ret_t describeThrown(duk_context* engine, void*) {
    const bool isError = duk_is_error(engine, 0);
    if (isError) {
        duk_get_prop_string(engine, 0, "fileName");
        duk_get_prop_string(engine, 0, "lineNumber");
    } else {
        pushText(engine, g_scriptName);
        duk_push_int(engine, g_thrownLine);
    }
    duk_push_sprintf(engine, "%s:%s: %s%s", duk_to_string(engine, 1), duk_to_string(engine, 2),
                     isError ? "" : "uncaught ", duk_to_string(engine, 0));
    return 1;
}

void reportThrown(duk_context* engine) {
    const bool isDescribed =
        duk_safe_call(engine, describeThrown, nullptr, 1, 1) == DUK_EXEC_SUCCESS;
    duk_safe_to_string(engine, -1);
    const std::string description = textAt(engine, -1);
    helper::ItemWriter items;
    items.writeText(isDescribed ? description : g_scriptName + ": " + description);
    tell(PageMessageKind::Problem, items);
}

[[noreturn]] void serveDevice(duk_context* engine) {
    while (true) {
        PageMessage event = receive();
        if (duk_safe_call(engine, handleEvent, &event, 0, 1) != DUK_EXEC_SUCCESS) {
            reportThrown(engine);
        }
        duk_set_top(engine, 0);
        tell(PageMessageKind::Idle, {});
    }
}

[[noreturn]] void endBroken(void*, const char* message) {
    std::fprintf(stderr, "page: %s\n", message);
    _exit(EXIT_FAILURE);
}

// Keeps the application's handlers from running here, and its terminal's interrupt from ending the
// page before the application.
void resetSignals() {
    for (int number = 1; number < NSIG; ++number) {
        signal(number, SIG_DFL);
    }
    signal(SIGINT, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

void runPageProcess(int socket, int parent) {
    resetSignals();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        end();
    }
    dup2(socket, kSocket);
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close_range(kSocket + 1, ~0u, 0);

    static PageChannel channel(kSocket);
    g_channel = &channel;
    duk_context* engine = duk_create_heap(allocate, reallocate, release, nullptr, endBroken);
    if (engine == nullptr ||
        duk_safe_call(engine, furnishPage, nullptr, 0, 1) != DUK_EXEC_SUCCESS) {
        endBroken(nullptr, "the JavaScript engine does not start");
    }
    duk_set_top(engine, 0);
    serveDevice(engine);
}

}  // namespace tavsim
