// Tracks that a receiver has recorded: files of GPX, and logs of NMEA 0183.
#ifndef TAV_SIMULATOR_WORLD_TRACK_H
#define TAV_SIMULATOR_WORLD_TRACK_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/visibility.h"
#include "simulator/world/position.h"

namespace tavsim {

struct TrackPoint {
    int line = 0;                      // of the file
    std::optional<Milliseconds> time;  // in a file's points, all have one or none
    std::optional<Fix> fix;            // none: there was none at that time
    bool isMoving = false;             // heading and velocity were recorded too
};

using Track = std::vector<TrackPoint>;

// Of what a file of tracks may hold.
inline constexpr size_t kLargestTrack = 16 << 20;

// Reads either of the two. Its times begin at 0 and never go back; where it has none, a point comes
// every second. Heading and velocity that it does not tell are those from each point to the next.
// Without a value, `problem` is one line that names the source and, where there is one, the line;
// with a value, one that tells which lines of a log were left out, or what it was.
TAV_PLATFORM_API std::optional<Track> parseTrack(const std::string& content,
                                                 const std::string& source, std::string* problem);
std::optional<Track> readTrack(const std::string& path, std::string* problem);

// At so many times the speed.
Way wayOf(std::shared_ptr<const Track> track, double factor);

}  // namespace tavsim

#endif
