#include "linux/services/geoclue.h"

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "linux/application/application.h"
#include "linux/bus/connection.h"

namespace tavlinux {
namespace {

constexpr char kManagerPath[] = "/org/freedesktop/GeoClue2/Manager";
constexpr char kManager[] = "org.freedesktop.GeoClue2.Manager";
constexpr char kClient[] = "org.freedesktop.GeoClue2.Client";
constexpr char kLocation[] = "org.freedesktop.GeoClue2.Location";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr guint32 kExact = 8;
constexpr double kUnknown = -1.0;

// One client of GeoClue's for all listeners.
struct Tracker {
    std::map<int, PositionListener> listeners;
    int lastNumber = 0;
    int session = 0;  // counts the starts; what belongs to an earlier one is void
    bool isStarting = false;
    bool hasWorked = false;  // since the last start
    bool isAwaited = false;  // the service was there and has gone
    std::string client;      // its path
    std::unique_ptr<Subscription> updates;
    std::unique_ptr<Subscription> owner;
};

Tracker& tracker() {
    static Tracker& instance = *new Tracker;
    return instance;
}

Method ofManager(const char* name) {
    return {Bus::System, kGeoClue, kManagerPath, kManager, name};
}

Method ofClient(const char* interface, const char* name) {
    return {Bus::System, kGeoClue, tracker().client, interface, name};
}

// Listeners may stop each other.
void tellAll(const std::function<void(const PositionListener&)>& tell) {
    const std::map<int, PositionListener> listeners = tracker().listeners;
    for (const auto& [number, listener] : listeners) {
        if (tracker().listeners.contains(number)) {
            tell(listener);
        }
    }
}

void failStart(const GError* problem) {
    tracker().isStarting = false;
    if (tracker().isAwaited && isNobodyThere(problem)) {
        return;  // until it is back
    }
    tellAll([problem](const PositionListener& listener) { listener.onProblem(problem); });
}

double valueOf(GVariant* properties, const char* name) {
    double value = kUnknown;
    g_variant_lookup(properties, name, "d", &value);
    return std::isfinite(value) && value != -G_MAXDOUBLE ? value : kUnknown;
}

void takeLocation(GVariant* result) {
    if (g_variant_is_of_type(result, G_VARIANT_TYPE("(a{sv})")) == FALSE) {
        return;
    }
    const Variant properties(g_variant_get_child_value(result, 0));
    const Position position{
        valueOf(properties.get(), "Latitude"), valueOf(properties.get(), "Longitude"),
        valueOf(properties.get(), "Altitude"), valueOf(properties.get(), "Accuracy"),
        valueOf(properties.get(), "Heading"),  valueOf(properties.get(), "Speed")};
    tracker().hasWorked = true;
    tracker().isAwaited = false;
    tellAll([&position](const PositionListener& listener) { listener.onPosition(position); });
}

void readLocation(GVariant* update) {
    if (g_variant_is_of_type(update, G_VARIANT_TYPE("(oo)")) == FALSE) {
        return;
    }
    const char* path = nullptr;
    g_variant_get_child(update, 1, "&o", &path);
    call({Bus::System, kGeoClue, path, kProperties, "GetAll"}, g_variant_new("(s)", kLocation),
         [session = tracker().session](GVariant* result, const GError*) {
             if (result != nullptr && session == tracker().session) {
                 takeLocation(result);
             }
         });
}

void setProperty(const char* name, GVariant* value) {
    call(ofClient(kProperties, "Set"), g_variant_new("(ssv)", kClient, name, value), nullptr);
}

void useClient(const char* path) {
    GDBusConnection* connection = connectionTo(Bus::System);
    if (connection == nullptr) {
        return;
    }
    tracker().client = path;
    tracker().updates = std::make_unique<Subscription>(
        connection, kGeoClue, path, kClient, "LocationUpdated", nullptr,
        [](const char*, GVariant* update) { readLocation(update); });
    setProperty("DesktopId", g_variant_new_string(applicationId().c_str()));
    setProperty("RequestedAccuracyLevel", g_variant_new_uint32(kExact));
    call(ofClient(kClient, "Start"), nullptr,
         [session = tracker().session](const GVariant* result, const GError* problem) {
             if (session != tracker().session) {
                 return;
             }
             tracker().isStarting = false;
             if (result == nullptr) {
                 failStart(problem);
             }
         });
}

void start() {
    Tracker& now = tracker();
    now.isStarting = true;
    now.hasWorked = false;
    call(ofManager("GetClient"), nullptr,
         [session = ++now.session](GVariant* result, const GError* problem) {
             if (session != tracker().session) {
                 return;
             }
             const char* path = nullptr;
             const bool isPath =
                 result != nullptr && g_variant_is_of_type(result, G_VARIANT_TYPE("(o)")) != FALSE;
             if (!isPath) {
                 failStart(problem);
                 return;
             }
             g_variant_get(result, "(&o)", &path);
             useClient(path);
         });
}

// A service that crashes whenever it is started is not started again and again.
void onOwnerChanged(bool hasOwner) {
    Tracker& now = tracker();
    if (now.listeners.empty()) {
        return;
    }
    if (hasOwner) {
        if (!now.isStarting && now.client.empty()) {
            start();
        }
        return;
    }
    ++now.session;
    now.isStarting = false;
    now.client.clear();
    now.updates.reset();
    now.isAwaited = true;
    if (now.hasWorked) {
        start();
    }
}

}  // namespace

int listenForPositions(PositionListener listener) {
    if (connectionTo(Bus::System) == nullptr) {
        return 0;
    }
    Tracker& now = tracker();
    const int number = ++now.lastNumber;
    now.listeners.emplace(number, std::move(listener));
    if (now.listeners.size() == 1) {
        now.owner = watchOwner(Bus::System, kGeoClue, onOwnerChanged);
        start();
    }
    return number;
}

void stopListening(int number) {
    Tracker& now = tracker();
    if (now.listeners.erase(number) == 0 || !now.listeners.empty()) {
        return;
    }
    if (!now.client.empty()) {
        call(ofClient(kClient, "Stop"), nullptr, nullptr);
        call(ofManager("DeleteClient"), g_variant_new("(o)", now.client.c_str()), nullptr);
    }
    ++now.session;
    now.isAwaited = false;
    now.client.clear();
    now.updates.reset();
    now.owner.reset();
}

}  // namespace tavlinux
