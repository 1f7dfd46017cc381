// The location service, which sends the device's position.
#include "base/json/writer.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/profile_services.h"
#include "simulator/bus/services.h"

namespace tavsim {
namespace {

std::string fixReply(const Fix& fix) {
    return base::jsonObject("errorCode", 0, "latitude", fix.latitude, "longitude", fix.longitude,
                            "altitude", fix.altitude, "horizAccuracy", fix.horizAccuracy,
                            "vertAccuracy", fix.vertAccuracy, "heading", fix.heading, "velocity",
                            fix.velocity);
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
    return base::jsonObject("errorCode", code);
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
