#include "linux/host/compass.h"

#include <cmath>
#include <memory>

#include "linux/bus/connection.h"
#include "linux/bus/pump.h"
#include "linux/bus/subscription.h"
#include "linux/services/geoclue.h"
#include "linux/services/location.h"

namespace tavlinux {
namespace {

constexpr char kService[] = "net.hadess.SensorProxy";
constexpr char kPath[] = "/net/hadess/SensorProxy/Compass";
constexpr char kCompass[] = "net.hadess.SensorProxy.Compass";
constexpr char kHeading[] = "CompassHeading";

struct Compass {
    NApp_CompassCallback callback = nullptr;
    bool isEnabled = false;
    int run = 0;  // number of switches; readings of an earlier run are discarded
    std::unique_ptr<Subscription> changes;
    std::unique_ptr<Subscription> owner;
    int listener = 0;  // at GeoClue
};

Compass& compass() {
    static Compass& instance = *new Compass;
    return instance;
}

void deliverHeading(double heading) {
    if (!std::isfinite(heading) || heading < 0.0) {
        return;
    }
    deliver([heading, run = compass().run] {
        if (run == compass().run && compass().isEnabled && compass().callback != nullptr) {
            compass().callback(1, heading, 1.0);
        }
    });
}

void takeChange(GVariant* change) {
    double heading = 0.0;
    if (!isOfType(change, "(sa{sv}as)")) {
        return;
    }
    const Variant values = childOf(change, 1);
    if (g_variant_lookup(values.get(), kHeading, "d", &heading) != FALSE) {
        deliverHeading(heading);
    }
}

void readHeading() {
    call({Bus::System, kService, kPath, kProperties, "Get"},
         g_variant_new("(ss)", kCompass, kHeading), [](GVariant* result, const GError*) {
             const Variant value = isOfType(result, "(v)") ? valueIn(result) : nullptr;
             if (isOfType(value.get(), "d")) {
                 deliverHeading(g_variant_get_double(value.get()));
             }
         });
}

// A restarted service no longer knows that the compass was claimed.
void claimAgain(bool hasOwner) {
    if (hasOwner) {
        call({Bus::System, kService, kPath, kCompass, "ClaimCompass"}, nullptr,
             [](const GVariant* result, const GError*) {
                 if (result != nullptr && compass().changes) {
                     readHeading();
                 }
             });
    }
}

bool hasCompass() {
    const Variant value = propertyOf(Bus::System, kService, kPath, kCompass, "HasCompass");
    return isOfType(value.get(), "b") && g_variant_get_boolean(value.get()) != FALSE;
}

void releaseSensor() {
    call({Bus::System, kService, kPath, kCompass, "ReleaseCompass"}, nullptr, nullptr);
}

bool useSensor() {
    const Method claim{Bus::System, kService, kPath, kCompass, "ClaimCompass"};
    if (!hasCompass() || !callBriefly(claim, nullptr, "()", [](GVariant*) { releaseSensor(); })) {
        return false;
    }
    compass().changes = std::make_unique<Subscription>(
        Subscription::Match{Bus::System, kService, kPath, kProperties, "PropertiesChanged",
                            kCompass},
        [](const char*, GVariant* change) { takeChange(change); });
    compass().owner = watchOwner(Bus::System, kService, claimAgain);
    readHeading();
    return true;
}

bool useGeoClue() {
    if (!isAvailable(Bus::System, kGeoClue)) {
        return false;
    }
    compass().listener = listenForPositions(
        {[](const Position& position) { deliverHeading(position.heading); }, [](const GError*) {}});
    return compass().listener != 0;
}

void release() {
    if (compass().changes) {
        releaseSensor();
    }
    compass().changes.reset();
    compass().owner.reset();
    stopListening(compass().listener);
    compass().listener = 0;
}

}  // namespace

void setCompassCallback(NApp_CompassCallback callback) {
    compass().callback = callback;
}

bool enableCompass(bool enable) {
    if (enable == compass().isEnabled) {
        return true;
    }
    if (enable && !useSensor() && !useGeoClue()) {
        return false;
    }
    if (!enable) {
        release();
    }
    compass().isEnabled = enable;
    ++compass().run;
    return true;
}

}  // namespace tavlinux
