#include "linux/services/location.h"

#include "base/json/writer.h"
#include "linux/services/geoclue.h"

namespace tavlinux {
namespace {

constexpr int kNotAllowed = 5;
constexpr int kNotStarted = 1;
constexpr double kUnknown = -1.0;

std::string fixReply(const Position& position) {
    return base::JsonWriter()
        .beginObject()
        .member("errorCode", 0)
        .member("latitude", position.latitude)
        .member("longitude", position.longitude)
        .member("altitude", position.altitude)
        .member("horizAccuracy", position.accuracy)
        .member("vertAccuracy", kUnknown)
        .member("heading", position.heading)
        .member("velocity", position.speed)
        .endObject()
        .take();
}

std::string problemReply(const GError* problem) {
    const bool isDenied =
        problem != nullptr &&
        g_error_matches(problem, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE;
    const char* text = problem != nullptr ? problem->message : "GeoClue gave no client";
    return base::JsonWriter()
        .beginObject()
        .member("errorCode", isDenied ? kNotAllowed : kNotStarted)
        .member("errorText", text)
        .endObject()
        .take();
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

}  // namespace tavlinux
