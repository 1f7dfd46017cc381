#include "simulator/host/compass.h"

#include <cmath>

#include "simulator/device/journal.h"
#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/time/clock.h"
#include "simulator/time/queue.h"
#include "simulator/world/position.h"

namespace tavsim {
namespace {

constexpr double kFullTurn = 360.0;

NApp_CompassCallback g_callback = nullptr;
bool g_enabled = false;
Milliseconds g_enabledAt = 0;
size_t g_played = 0;
bool g_follows = false;
std::optional<double> g_held;
std::optional<double> g_lastHeading;
int g_run = 0;  // incremented each time it is enabled, to drop readings that were queued before

CompassReading nextReading() {
    if (g_held) {
        return {1, *g_held, 1.0};
    }
    if (g_follows) {
        return {1, presentFix().value_or(Fix()).heading, 1.0};
    }
    const Compass& compass = profile().compass;
    if (!compass.readings.empty()) {
        const size_t last = compass.readings.size() - 1;
        return compass.readings[g_played < last ? g_played++ : last];
    }
    const double seconds = static_cast<double>(now() - g_enabledAt) / 1000.0;
    return {1, std::fmod(compass.turn * seconds, kFullTurn), 1.0};
}

bool hasReadings() {
    const Compass& compass = profile().compass;
    return g_held || g_follows || !compass.readings.empty() || compass.turn != 0.0;
}

void scheduleReading(Milliseconds due, int run) {
    schedule(due, "compass reading", [due, run] {
        if (!g_enabled || run != g_run) {
            return;
        }
        scheduleReading(after(due, profile().compass.interval), run);
        deliverCompassReading(nextReading());
    });
}

// Replaces the queued readings.
void startReadings() {
    ++g_run;
    if (g_enabled && hasReadings()) {
        scheduleReading(after(now(), profile().compass.interval), g_run);
    }
}

}  // namespace

void setCompassCallback(NApp_CompassCallback callback) {
    g_callback = callback;
}

void enableCompass(bool enable) {
    setState("compass", enable ? "on" : "off");
    if (enable == g_enabled) {
        return;
    }
    g_enabled = enable;
    g_enabledAt = now();
    startReadings();
}

// Readings that are queued stay, so that those who change it again and again do not keep them from
// coming.
void holdCompass(std::optional<double> heading) {
    const bool hadReadings = hasReadings();
    g_held = heading;
    if (hasReadings() != hadReadings) {
        startReadings();
    }
}

void letCompassFollow(bool follow) {
    g_follows = follow;
    startReadings();
}

CompassState compassState() {
    return {g_enabled, g_lastHeading, g_follows, g_held.has_value()};
}

bool deliverCompassReading(const CompassReading& reading) {
    if (g_callback == nullptr) {
        return false;
    }
    writeEntry("host", "compass reading", "intValue", reading.intValue, "doubleValue1",
               reading.doubleValue1, "doubleValue2", reading.doubleValue2);
    g_lastHeading = reading.doubleValue1;
    g_callback(reading.intValue, reading.doubleValue1, reading.doubleValue2);
    return true;
}

void stopCompass() {
    g_callback = nullptr;
    g_enabled = false;
    g_follows = false;
    g_held.reset();
    g_lastHeading.reset();
    g_played = 0;
}

}  // namespace tavsim
