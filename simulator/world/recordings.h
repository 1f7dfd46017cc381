// The two file formats of recorded tracks.
#pragma once

#include <string>

#include "simulator/world/track.h"

namespace tavsim {

// An error in a file, and its line.
struct TrackError {
    int line;
    std::string what;
};

// The points as they are in the file. Throws a TrackError. Of a log, `leftOut` says how many lines
// could not be read; it stays as it is when all could.
Track pointsOfGpx(const std::string& content);
Track pointsOfNmea(const std::string& content, std::string* leftOut);

// The accuracy of a receiver, in metres.
inline Fix fixOfReceiver() {
    Fix fix;
    fix.horizAccuracy = 5.0;
    fix.vertAccuracy = 10.0;
    return fix;
}

}  // namespace tavsim
