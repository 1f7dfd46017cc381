// Recorded tracks: GPX files and NMEA 0183 logs.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/visibility.h"
#include "simulator/world/position.h"

namespace tavsim {

struct TrackPoint {
    int line = 0;                      // of the file
    std::optional<Milliseconds> time;  // in a file, either all points have one or none
    std::optional<Fix> fix;            // none: there was none at that time
    bool isMoving = false;             // heading and velocity were recorded too
};

using Track = std::vector<TrackPoint>;

// The limits of a track file.
inline constexpr size_t kLargestTrack = 16 << 20;

// Reads either format. The times begin at 0 and never go back; without times, there is a point
// every second. Heading and velocity that were not recorded are calculated from each point to the
// next. Without a value, `problem` is one line that names the source and, if there is one, the
// line. With a value, `problem` says which lines of a log were skipped, or is unchanged.
TAV_PLATFORM_API std::optional<Track> parseTrack(const std::string& content,
                                                 const std::string& source, std::string* problem);
std::optional<Track> readTrack(const std::string& path, std::string* problem);

// At a multiple of the recorded speed.
Way wayOf(std::shared_ptr<const Track> track, double factor);

}  // namespace tavsim
