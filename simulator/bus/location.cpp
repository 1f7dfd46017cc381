#include "simulator/bus/location.h"

#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"

namespace tavsim {
namespace {

std::string fixReply(const Fix& fix) {
    return base::JsonWriter()
        .beginObject()
        .member("errorCode", 0)
        .member("latitude", fix.latitude)
        .member("longitude", fix.longitude)
        .member("altitude", fix.altitude)
        .member("horizAccuracy", fix.horizAccuracy)
        .member("vertAccuracy", fix.vertAccuracy)
        .member("heading", fix.heading)
        .member("velocity", fix.velocity)
        .endObject()
        .take();
}

std::string replyOf(const Report& report) {
    const Fix* fix = std::get_if<Fix>(&report);
    return fix != nullptr ? fixReply(*fix) : locationErrorReply(std::get<int>(report));
}

}  // namespace

Answer startTracking(const simdjson::dom::object& /*request*/) {
    const std::optional<Report> report = beginTracking();
    return report ? Answer{{replyOf(*report)}} : Answer();
}

std::string locationErrorReply(int code) {
    return base::JsonWriter().beginObject().member("errorCode", code).endObject().take();
}

void announceLocation(const Report& report) {
    if (profileService(kLocationUri) != nullptr) {
        return;  // which replaces this service
    }
    for (const int token : openBusCalls(kLocationUri)) {
        deliverReply(token, replyOf(report));
    }
}

}  // namespace tavsim
