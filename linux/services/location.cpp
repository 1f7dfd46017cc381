#include "linux/services/location.h"

#include <map>
#include <memory>
#include <utility>

#include "base/json/writer.h"
#include "linux/bus/connection.h"
#include "linux/services/geoclue.h"
#include "linux/services/location_portal.h"
#include "linux/services/services.h"

namespace tavlinux {
namespace {

constexpr int kNotAllowed = 5;
constexpr int kNotStarted = 1;

struct Tracker {
    std::map<int, PositionListener> listeners;
    int lastNumber = 0;
    std::unique_ptr<GeoClue> geoClue;
    std::unique_ptr<LocationPortal> portal;  // where there is no GeoClue
};

Tracker& tracker() {
    static Tracker& instance = *new Tracker;
    return instance;
}

std::string fixReply(const Position& position) {
    return base::jsonObject("errorCode", 0, "latitude", position.latitude, "longitude",
                            position.longitude, "altitude", position.altitude, "horizAccuracy",
                            position.accuracy, "vertAccuracy", kUnknown, "heading",
                            position.heading, "velocity", position.speed);
}

std::string problemReply(const GError* problem) {
    const bool isDenied =
        problem != nullptr &&
        g_error_matches(problem, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE;
    const char* text = problem != nullptr ? problem->message : "GeoClue gave no client";
    return base::jsonObject("errorCode", isDenied ? kNotAllowed : kNotStarted, "errorText", text);
}

PositionListener everyListener() {
    return {[](const Position& position) {
                for (const auto& [number, listener] : tracker().listeners) {
                    listener.onPosition(position);
                }
            },
            [](const GError* problem) {
                for (const auto& [number, listener] : tracker().listeners) {
                    listener.onProblem(problem);
                }
            }};
}

void usePortal() {
    tracker().portal = std::make_unique<LocationPortal>(everyListener());
}

}  // namespace

Dispatched startTracking(const simdjson::dom::object&, const Answer& answer) {
    const int number =
        listenForPositions({[answer](const Position& position) { answer(fixReply(position)); },
                            [answer](const GError* problem) { answer(problemReply(problem)); }});
    if (number == 0) {
        return std::nullopt;
    }
    return [number] { stopListening(number); };
}

int listenForPositions(PositionListener listener) {
    if (connectionTo(Bus::System) == nullptr && connectionTo(Bus::Session) == nullptr) {
        return 0;
    }
    Tracker& now = tracker();
    const int number = ++now.lastNumber;
    now.listeners.emplace(number, std::move(listener));
    if (now.listeners.size() == 1) {
        now.geoClue = std::make_unique<GeoClue>(everyListener(), usePortal);
    }
    return number;
}

void stopListening(int number) {
    Tracker& now = tracker();
    if (now.listeners.erase(number) != 0 && now.listeners.empty()) {
        now.geoClue.reset();
        now.portal.reset();
    }
}

}  // namespace tavlinux
