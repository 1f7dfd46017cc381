#include "simulator/page/page_process.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "simulator/page/script.h"

namespace tavsim {
namespace {

[[noreturn]] void endBroken(void*, const char* reason) {
    beginMessage(bridge::MessageKind::Broken);
    addText({reason, std::strlen(reason)});
    sendMessage();
    _exit(EXIT_FAILURE);
}

duk_ret_t furnishPage(duk_context* engine, void*) {
    duk_push_global_object(engine);
    addConsole(engine);
    addTimers(engine);
    addComponent(engine);
    watchThrows(engine);
    // With finalizers, the script could run at any allocation.
    duk_del_prop_string(engine, -1, "Duktape");
    return 0;
}

void runScript(duk_context* engine) {
    pushText(engine, readText());
    nameScript(engine);
    pushText(engine, readText());
    duk_insert(engine, -2);
    duk_compile(engine, 0);
    duk_call(engine, 0);
}

// Handles the event that the device has sent.
duk_ret_t handleEvent(duk_context* engine, void* kind) {
    switch (*static_cast<const bridge::MessageKind*>(kind)) {
    case bridge::MessageKind::RunScript:
        runScript(engine);
        break;
    case bridge::MessageKind::CallFunction:
        callListener(engine);
        break;
    case bridge::MessageKind::TimerDue:
        runTimer(engine);
        break;
    default:
        break;
    }
    return 0;
}

[[noreturn]] void serveDevice(duk_context* engine) {
    while (true) {
        bridge::MessageKind event = receiveMessage();
        if (duk_safe_call(engine, handleEvent, &event, 0, 1) != DUK_EXEC_SUCCESS) {
            reportThrown(engine);
        }
        duk_set_top(engine, 0);
        beginMessage(bridge::MessageKind::Idle);
        sendMessage();
    }
}

void keepOnly(int socket) {
    dup2(socket, kDeviceSocket);
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close_range(kDeviceSocket + 1, ~0u, 0);
}

}  // namespace

void runPageProcess(int socket) {
    keepOnly(socket);
    duk_context* engine = createEngine(endBroken);
    if (engine == nullptr ||
        duk_safe_call(engine, furnishPage, nullptr, 0, 1) != DUK_EXEC_SUCCESS) {
        endBroken(nullptr, "the JavaScript engine does not start");
    }
    duk_set_top(engine, 0);
    serveDevice(engine);
}

}  // namespace tavsim
