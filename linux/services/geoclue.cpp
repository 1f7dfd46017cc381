#include "linux/services/geoclue.h"

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "linux/application/application.h"
#include "linux/bus/connection.h"
#include "linux/bus/subscription.h"
#include "linux/services/location_portal.h"

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
    std::unique_ptr<LocationPortal> portal;  // where there is no GeoClue
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

double valueOf(GVariant* properties, const char* name) {
    double value = kUnknown;
    g_variant_lookup(properties, name, "d", &value);
    return std::isfinite(value) && value != -G_MAXDOUBLE ? value : kUnknown;
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

void tellProblem(const GError* problem) {
    tellAll([problem](const PositionListener& listener) { listener.onProblem(problem); });
}

void takePosition(GVariant* properties) {
    tracker().hasWorked = true;
    tracker().isAwaited = false;
    const Position position{valueOf(properties, "Latitude"), valueOf(properties, "Longitude"),
                            valueOf(properties, "Altitude"), valueOf(properties, "Accuracy"),
                            valueOf(properties, "Heading"),  valueOf(properties, "Speed")};
    tellAll([&position](const PositionListener& listener) { listener.onPosition(position); });
}

void usePortal() {
    tracker().portal = std::make_unique<LocationPortal>(takePosition, tellProblem);
}

void failStart(const GError* problem) {
    tracker().isStarting = false;
    if (!isNobodyThere(problem)) {
        tellProblem(problem);
    } else if (!tracker().isAwaited) {  // otherwise until it is back
        usePortal();
    }
}

void readLocation(GVariant* update) {
    if (g_variant_is_of_type(update, G_VARIANT_TYPE("(oo)")) == FALSE) {
        return;
    }
    const char* path = nullptr;
    g_variant_get_child(update, 1, "&o", &path);
    call({Bus::System, kGeoClue, path, kProperties, "GetAll"}, g_variant_new("(s)", kLocation),
         [session = tracker().session](GVariant* result, const GError*) {
             if (result != nullptr && session == tracker().session &&
                 g_variant_is_of_type(result, G_VARIANT_TYPE("(a{sv})")) != FALSE) {
                 takePosition(Variant(g_variant_get_child_value(result, 0)).get());
             }
         });
}

void setProperty(const char* name, GVariant* value) {
    call(ofClient(kProperties, "Set"), g_variant_new("(ssv)", kClient, name, value), nullptr);
}

void useClient(const char* path) {
    tracker().client = path;
    tracker().updates = std::make_unique<Subscription>(
        Subscription::Match{Bus::System, kGeoClue, path, kClient, "LocationUpdated"},
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

void takeClient(GVariant* result, const GError* problem) {
    const char* path = nullptr;
    if (result == nullptr || g_variant_is_of_type(result, G_VARIANT_TYPE("(o)")) == FALSE) {
        failStart(problem);
        return;
    }
    g_variant_get(result, "(&o)", &path);
    useClient(path);
}

// False when the bus is not there.
bool start() {
    Tracker& now = tracker();
    now.isStarting = true;
    now.hasWorked = false;
    now.isStarting = call(ofManager("GetClient"), nullptr,
                          [session = ++now.session](GVariant* result, const GError* problem) {
                              if (session == tracker().session) {
                                  takeClient(result, problem);
                              }
                          });
    return now.isStarting;
}

// A service that crashes whenever it is started is not started again and again.
void onOwnerChanged(bool hasOwner) {
    Tracker& now = tracker();
    if (now.listeners.empty() || now.portal) {
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
    if (connectionTo(Bus::System) == nullptr && connectionTo(Bus::Session) == nullptr) {
        return 0;
    }
    Tracker& now = tracker();
    const int number = ++now.lastNumber;
    now.listeners.emplace(number, std::move(listener));
    if (now.listeners.size() == 1) {
        now.owner = watchOwner(Bus::System, kGeoClue, onOwnerChanged);
        if (!start()) {
            usePortal();
        }
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
    now.portal.reset();
}

}  // namespace tavlinux
