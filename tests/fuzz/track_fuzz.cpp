// Tracks, in GPX and NMEA. Input: the file.
#include <cmath>

#include "fuzz.h"
#include "simulator/world/track.h"

using tavfuzz::expect;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string content = tavfuzz::textOf(bytes, size);
    std::string error;
    const std::optional<tavsim::Track> track = tavsim::parseTrack(content, "fuzz.gpx", &error);
    if (!track || !error.empty()) {
        tavfuzz::expectOneLine(error, "fuzz.gpx:");
    }
    if (!track) {
        return 0;
    }
    expect(!track->empty(), "a track that was read has points");
    tavsim::Milliseconds last = 0;
    for (const tavsim::TrackPoint& point : *track) {
        expect(point.time && *point.time >= last, "time does not go back");
        last = *point.time;
        const tavsim::Fix fix = point.fix.value_or(tavsim::Fix());
        expect(std::abs(fix.latitude) <= tavsim::kHighestLatitude &&
                   std::abs(fix.longitude) <= tavsim::kHighestLongitude,
               "a point is on the earth");
        expect(std::isfinite(fix.altitude) && std::isfinite(fix.heading) &&
                   std::isfinite(fix.velocity),
               "a fix has numbers");
    }
    return 0;
}
