// A call of a service on the session bus, from the request to its reply: through the library, and
// with GDBus. The service is the bus itself.
#include <benchmark/benchmark.h>
#include <gio/gio.h>

#include <cstring>

#include "SDL.h"
#include "tav.h"

namespace {

constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kPath[] = "/org/freedesktop/DBus";
constexpr char kUri[] = "vire://org.freedesktop.DBus/GetNameOwner";
constexpr char kPayload[] = R"(["org.freedesktop.DBus"])";

struct Call {
    bool isDone = false;
    bool isRight = false;
};

void onReply(TAV_ServiceParameters* reply, void* data) {
    char owner[64];
    Call& call = *static_cast<Call*>(data);
    TAV_GetParamString(reply, "arg0", owner, sizeof owner);
    call = {true, std::strcmp(owner, kBus) == 0};
    SDL_Event event{};
    event.type = SDL_USEREVENT;
    SDL_PushEvent(&event);  // as an application does that waits for events
}

bool callWithLibrary() {
    Call call;
    SDL_Event event;
    if (TAV_ServiceCallWithCallback(kUri, kPayload, onReply, &call, SDL_TRUE) != TAV_NOERROR) {
        return false;
    }
    while (!call.isDone && SDL_WaitEvent(&event) != 0) {}
    return call.isRight;
}

void onAnswer(GObject* connection, GAsyncResult* result, gpointer data) {
    GVariant* answer =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
    const char* owner = "";
    if (answer != nullptr) {
        g_variant_get(answer, "(&s)", &owner);
    }
    *static_cast<Call*>(data) = {true, std::strcmp(owner, kBus) == 0};
    if (answer != nullptr) {
        g_variant_unref(answer);
    }
}

bool callWithGdbus(GDBusConnection* connection) {
    Call call;
    g_dbus_connection_call(connection, kBus, kPath, kBus, "GetNameOwner",
                           g_variant_new("(s)", kBus), G_VARIANT_TYPE("(s)"),
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, onAnswer, &call);
    while (!call.isDone) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return call.isRight;
}

void linuxCallLibtav(benchmark::State& state) {
    SDL_Init(SDL_INIT_VIDEO);
    TAV_Init(0);
    bool isRight = callWithLibrary();  // the first call connects and introspects
    for (auto _ : state) {
        isRight = callWithLibrary() && isRight;
    }
    if (!isRight) {
        state.SkipWithError("no reply, or a wrong one");
    }
    TAV_Quit();
    SDL_Quit();
}
BENCHMARK(linuxCallLibtav)->MeasureProcessCPUTime()->UseRealTime();

void linuxCallGdbus(benchmark::State& state) {
    GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    bool isRight = connection != nullptr && callWithGdbus(connection);
    for (auto _ : state) {
        isRight = isRight && callWithGdbus(connection);
    }
    if (!isRight) {
        state.SkipWithError("no answer, or a wrong one");
    }
    g_clear_object(&connection);
}
BENCHMARK(linuxCallGdbus)->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
