#include "simulator/world/track.h"

#include <cmath>

#include "base/file.h"
#include "simulator/world/recordings.h"
#include "simulator/world/walk.h"

namespace tavsim {
namespace {

constexpr Milliseconds kPause = 1000;  // between points without times

// Throws a TrackError.
void startTimesAtZero(Track* track) {
    const std::optional<Milliseconds> first = track->front().time;
    Milliseconds last = 0;
    for (size_t i = 0; i < track->size(); ++i) {
        TrackPoint& point = (*track)[i];
        if (point.time.has_value() != first.has_value()) {
            throw TrackError{point.line, point.time ? "the point has a time, but others have none"
                                                    : "the point has no time, but others have one"};
        }
        const Milliseconds time =
            first ? *point.time - *first : static_cast<Milliseconds>(i) * kPause;
        if (time < last) {
            throw TrackError{point.line, "the time is before the one of the point before"};
        }
        point.time = time;
        last = time;
    }
}

Place placeOf(const Fix& fix) {
    return {fix.latitude, fix.longitude};
}

// If they were not recorded.
void addMotion(Track* track) {
    double heading = 0.0;
    for (size_t i = 0; i < track->size(); ++i) {
        TrackPoint& point = (*track)[i];
        if (!point.fix || point.isMoving) {
            heading = point.fix ? point.fix->heading : heading;
            continue;
        }
        const TrackPoint* next = i + 1 < track->size() ? &(*track)[i + 1] : nullptr;
        if (next != nullptr && next->fix && *next->time > *point.time) {
            const double way = distanceBetween(placeOf(*point.fix), placeOf(*next->fix));
            heading = way > 0 ? bearingTo(placeOf(*point.fix), placeOf(*next->fix)) : heading;
            point.fix->velocity = way * 1000 / static_cast<double>(*next->time - *point.time);
        }
        point.fix->heading = heading;
    }
}

// A log may begin with anything before its first sentence, except with the bracket of XML.
bool isNmea(const std::string& content) {
    const size_t first = content.find_first_of("<$!");
    return first != std::string::npos && content[first] != '<';
}

}  // namespace

std::optional<Track> parseTrack(const std::string& content, const std::string& source,
                                std::string* problem) {
    try {
        std::string leftOut;
        Track track = isNmea(content) ? pointsOfNmea(content, &leftOut) : pointsOfGpx(content);
        if (track.empty()) {
            *problem = source + ": there is no point of a track in it";
            return std::nullopt;
        }
        startTimesAtZero(&track);
        addMotion(&track);
        for (TrackPoint& point : track) {
            if (point.fix) {
                point.fix = roundedFix(*point.fix);
            }
        }
        if (!leftOut.empty()) {
            *problem = source + ": " + leftOut;
        }
        return track;
    } catch (const TrackError& error) {
        *problem = source + ":" + std::to_string(error.line) + ": " + error.what;
        return std::nullopt;
    }
}

std::optional<Track> readTrack(const std::string& path, std::string* problem) {
    const std::optional<std::string> content = base::readFile(path, kLargestTrack, problem);
    return content ? parseTrack(*content, path, problem) : std::nullopt;
}

Way wayOf(std::shared_ptr<const Track> track, double factor) {
    return [track = std::move(track), factor, next = size_t{0}]() mutable -> std::optional<Moment> {
        if (next == track->size()) {
            return std::nullopt;
        }
        const TrackPoint& point = (*track)[next++];
        const double at = static_cast<double>(*point.time) / factor;
        return Moment{std::llround(at), point.fix ? Report(*point.fix) : Report(kNoFix)};
    };
}

}  // namespace tavsim
