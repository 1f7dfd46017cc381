#include "linux/bus/connection.h"

#include <cstdlib>
#include <set>
#include <utility>

#include "linux/bus/pump.h"
#include "linux/bus/subscription.h"

namespace tavlinux {
namespace {

constexpr int kLongestConnectMs = 1000;
constexpr guint kBetweenLooksMs = 500;
constexpr gint64 kRestAfterHangUs = 10'000'000;

struct Line {
    GDBusConnection* connection = nullptr;
    bool isConnecting = false;  // meanwhile, calls find no bus
    gint64 restsUntil = 0;
};

struct Attempt {
    GDBusConnection* connection = nullptr;
    bool finished = false;
};

struct BriefCall {
    Variant result;
    bool isFinished = false;
    bool isLate = false;
};

// GLib's own look-up of an address may start programs, so it is not used.
std::string addressOf(Bus bus) {
    const bool isSession = bus == Bus::Session;
    const char* address =
        g_getenv(isSession ? "DBUS_SESSION_BUS_ADDRESS" : "DBUS_SYSTEM_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') {
        return g_str_has_prefix(address, "autolaunch:") != FALSE ? "" : address;
    }
    const std::string folder = isSession ? g_get_user_runtime_dir() : "/run/dbus";
    const std::string socket = folder + (isSession ? "/bus" : "/system_bus_socket");
    g_autofree char* escaped = g_dbus_address_escape_value(socket.c_str());
    return std::string("unix:path=") + escaped;
}

void onConnected(GObject*, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<std::shared_ptr<Attempt>> attempt(
        static_cast<std::shared_ptr<Attempt>*>(data));
    (*attempt)->connection = g_dbus_connection_new_for_address_finish(result, nullptr);
    (*attempt)->finished = true;
}

void connect(const std::string& address, Line* line) {
    const auto attempt = std::make_shared<Attempt>();
    g_autoptr(GCancellable) cancellable = g_cancellable_new();
    {
        const OnContext here;
        g_dbus_connection_new_for_address(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, cancellable, onConnected, new std::shared_ptr<Attempt>(attempt));
    }
    if (!serveUntil([&attempt] { return attempt->finished; }, kLongestConnectMs)) {
        line->restsUntil = g_get_monotonic_time() + kRestAfterHangUs;
        g_cancellable_cancel(cancellable);
    }
    line->connection = attempt->connection;
    // The last messages, such as the release of the compass, must still arrive.
    [[maybe_unused]] static const int isRegistered = std::atexit(flushConnections);
}

Line& lineOf(Bus bus) {
    static Line session;
    static Line system;
    return bus == Bus::Session ? session : system;
}

void onResult(GObject* connection, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Result> receiver(static_cast<Result*>(data));
    g_autoptr(GError) problem = nullptr;
    const Variant answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &problem));
    (*receiver)(answer.get(), problem);
}

bool isListed(Bus bus, const char* list, const char* service) {
    const Variant names =
        callBriefly({bus, kBusService, kBusPath, kBusService, list}, nullptr, "(as)");
    if (!names) {
        return false;
    }
    const Variant array = childOf(names.get(), 0);
    g_autofree const char** texts = g_variant_get_strv(array.get(), nullptr);
    return g_strv_contains(texts, service) != FALSE;
}

gboolean lookAgain(gpointer number) {
    const Bus bus = static_cast<Bus>(GPOINTER_TO_INT(number));
    return hasSubscriptions(bus) && connectionTo(bus) == nullptr ? G_SOURCE_CONTINUE
                                                                 : G_SOURCE_REMOVE;
}

void lookFromTimeToTime(Bus bus) {
    GSource* timer = g_timeout_source_new(kBetweenLooksMs);
    g_source_set_callback(timer, lookAgain, GINT_TO_POINTER(static_cast<int>(bus)), nullptr);
    g_source_attach(timer, context());
    g_source_unref(timer);
}

// The end of a bus is noticed by its "closed" signal or by the next use, whichever comes first.
void dropClosed(Bus bus) {
    Line& line = lineOf(bus);
    if (line.connection != nullptr && g_dbus_connection_is_closed(line.connection) != FALSE) {
        g_clear_object(&line.connection);
        lookFromTimeToTime(bus);
        detachSubscriptions(bus);
    }
}

void onClosed(GDBusConnection*, gboolean, GError*, gpointer number) {
    dropClosed(static_cast<Bus>(GPOINTER_TO_INT(number)));
}

}  // namespace

GDBusConnection* connectionTo(Bus bus) {
    if (!isApplicationThread()) {
        return nullptr;
    }
    dropClosed(bus);
    Line& line = lineOf(bus);
    if (line.connection != nullptr || line.isConnecting ||
        g_get_monotonic_time() < line.restsUntil) {
        return line.connection;
    }
    const std::string address = addressOf(bus);
    if (!address.empty()) {
        line.isConnecting = true;
        connect(address, &line);
        line.isConnecting = false;
    }
    if (line.connection != nullptr) {
        g_signal_connect(line.connection, "closed", G_CALLBACK(onClosed),
                         GINT_TO_POINTER(static_cast<int>(bus)));
        attachSubscriptions(bus);
    }
    return line.connection;
}

// The bus handles messages in their order. One that was only written is lost when the connection is
// closed before the proxy of a sandbox has read it.
void flushConnections() {
    if (!isApplicationThread()) {
        return;
    }
    for (const Bus bus : {Bus::Session, Bus::System}) {
        GDBusConnection* connection = lineOf(bus).connection;
        if (connection == nullptr || g_dbus_connection_is_closed(connection) != FALSE) {
            continue;
        }
        const auto isHandled = std::make_shared<bool>(false);
        if (call({bus, kBusService, kBusPath, kBusService, "GetId"}, nullptr,
                 [isHandled](GVariant*, const GError*) { *isHandled = true; })) {
            serveUntil([&isHandled] { return *isHandled; });
        }
    }
}

bool call(const Method& method, GVariant* arguments, Result result, GCancellable* cancellable) {
    const Variant kept = owned(arguments);
    GDBusConnection* connection = connectionTo(method.bus);
    if (connection == nullptr) {
        return false;
    }
    const bool isWanted = static_cast<bool>(result);
    const OnContext here;
    g_dbus_connection_call(
        connection, method.service.c_str(), method.path.c_str(), method.interface.c_str(),
        method.name.c_str(), arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, cancellable,
        isWanted ? onResult : nullptr, isWanted ? new Result(std::move(result)) : nullptr);
    return true;
}

Variant callBriefly(const Method& method, GVariant* arguments, const char* resultType,
                    LateResult late) {
    static auto& hanging = *new std::set<std::string>;  // services that have not answered yet
    const Variant kept = owned(arguments);
    if (!isApplicationThread() || hanging.contains(method.service)) {
        return nullptr;
    }
    const auto brief = std::make_shared<BriefCall>();
    const auto takeResult = [brief, service = method.service, type = std::string(resultType),
                             late = std::move(late)](GVariant* result, const GError*) {
        const bool fits = isOfType(result, type.c_str());
        brief->isFinished = true;
        brief->result.reset(fits ? g_variant_ref(result) : nullptr);
        if (brief->isLate) {
            hanging.erase(service);
        }
        if (brief->isLate && fits && late) {
            late(result);
        }
    };
    if (!call(method, arguments, takeResult)) {
        return nullptr;
    }
    if (!serveUntil([&brief] { return brief->isFinished; })) {
        brief->isLate = true;
        hanging.insert(method.service);
    }
    return std::move(brief->result);
}

Variant propertyOf(Bus bus, const std::string& service, const std::string& path,
                   const std::string& interface, const char* property) {
    const Variant answer = callBriefly({bus, service, path, kProperties, "Get"},
                                       g_variant_new("(ss)", interface.c_str(), property), "(v)");
    return answer ? valueIn(answer.get()) : nullptr;
}

bool isAvailable(Bus bus, const char* service) {
    return isListed(bus, "ListNames", service) || isListed(bus, "ListActivatableNames", service);
}

bool isNobodyThere(const GError* problem) {
    return problem != nullptr &&
           (g_error_matches(problem, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE ||
            g_error_matches(problem, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) != FALSE);
}

}  // namespace tavlinux
