// Commands for where the device is, where it goes, and what its compass tells.
#include <algorithm>
#include <climits>
#include <memory>
#include <vector>

#include "simulator/bus/services.h"
#include "simulator/control/command.h"
#include "simulator/host/compass.h"
#include "simulator/language/pattern.h"
#include "simulator/world/position.h"
#include "simulator/world/track.h"
#include "simulator/world/walk.h"

namespace tavsim {
namespace {

constexpr double kShortestPause = 0.001;  // seconds
constexpr Fix kNobodyKnowsWhere = {0, 0, 0, 5, 10, 0, 0};

// TIME or METRESm, as metres.
double readInterval(std::string_view word, double speed) {
    if (const std::optional<Milliseconds> time = readTime(word)) {
        return speed * static_cast<double>(*time) / 1000;
    }
    return readMetres(word);
}

struct WalkOrder {
    double speed = 0;
    double metres = 0;  // from one fix to the next
    std::vector<Place> places;
};

// SPEED [every TIME|METRESm] LAT,LON...
WalkOrder readWalk(Words words) {
    WalkOrder order;
    words.takeNumbers(&order.speed);
    order.metres = order.speed;
    std::string_view word = words.next();
    if (word == "every") {
        order.metres = readInterval(words.next(), order.speed);
        word = words.next();
    }
    for (; !word.empty(); word = words.next()) {
        order.places.push_back(readPlace(word));
    }
    return order;
}

CommandResult compass(Words words) {
    CompassReading reading;
    words.takeNumbers(&reading.intValue, &reading.doubleValue1, &reading.doubleValue2);
    return deliverCompassReading(reading)
               ? CommandResult()
               : failed("compass: the application has not called TAV_Init");
}

CommandResult compassFollow(Words words) {
    letCompassFollow(words.next() == "on");
    return {};
}

CommandResult compassHold(Words words) {
    double heading = 0;
    const bool isHeld = words.takeNumbers(&heading);
    holdCompass(isHeld ? std::optional(heading) : std::nullopt);
    return {};
}

CommandResult location(Words words) {
    Fix fix;
    words.takeNumbers(&fix.latitude, &fix.longitude, &fix.altitude, &fix.horizAccuracy,
                      &fix.vertAccuracy, &fix.heading, &fix.velocity);
    placeDevice(fix);
    return {};
}

CommandResult locationError(Words words) {
    int code = 0;
    words.takeNumbers(&code);
    return replyToAll(kLocationUri, locationErrorReply(code));
}

CommandResult locationLost(Words words) {
    int code = kNoFix;
    if (!words.isEmpty()) {
        words.takeNumbers(&code);
    }
    loseLocation(code);
    return {};
}

CommandResult locationFound(Words) {
    return findLocation() ? CommandResult() : failed("location found: it is not lost");
}

CommandResult locationEvery(Words words) {
    Receiver receiver;
    const Milliseconds every = readTime(words.next()).value_or(0);  // "off" is no time
    receiver.every = static_cast<int>(std::min<Milliseconds>(every, INT_MAX));
    receiver.accuracy = readMetres(words.next());
    words.takeNumbers(&receiver.seed);
    setReceiver(receiver);
    return {};
}

CommandResult walk(Words words) {
    WalkOrder order = readWalk(words);
    if (!(order.metres / order.speed >= kShortestPause)) {
        return failed("walk: there is at least a millisecond from one fix to the next");
    }
    const std::optional<Fix> present = presentFix();
    if (order.places.size() == 1) {
        if (!present) {
            return failed("walk: the device has no position yet to walk from; begin with one");
        }
        order.places.insert(order.places.begin(), {present->latitude, present->longitude});
    }
    setOut("walking",
           walkAlong(order.places, order.speed, order.metres, present.value_or(kNobodyKnowsWhere)));
    return {};
}

CommandResult track(Words words) {
    double factor = 1.0;
    const std::string_view file = words.restBeforeNumber(&factor);
    std::string problem;
    std::optional<Track> read = readTrack(pathOf(file), &problem);
    if (!read) {
        return failed("track: " + problem);
    }
    setOut("on a track", wayOf(std::make_shared<const Track>(std::move(*read)), factor));
    CommandResult result;
    result.output = problem.empty() ? "" : "track: " + problem + "\n";
    return result;
}

constexpr Command kWorldRows[] = {
    {"compass", "INT DOUBLE DOUBLE", "Deliver a compass reading.", compass},
    {"compass follow", "on|off", "Let the compass point where the device is heading, or not.",
     compassFollow},
    {"compass hold", "DEGREES|off", "Let the compass point there from now on, or end that.",
     compassHold},
    {"location",
     "LATITUDE LONGITUDE ALTITUDE HORIZONTAL_ACCURACY VERTICAL_ACCURACY HEADING VELOCITY",
     "Put the device there.", location},
    {"location error", "CODE", "Send an error of the location service.", locationError},
    {"location lost", "[CODE]", "Let the device not know its position from now on.", locationLost},
    {"location found", "", "Let it know its position again.", locationFound},
    {"location every", "TIME|off [ACCURACYm [SEED]]",
     "Send a fix every so often, also where the device stands, that is at most so many metres off.",
     locationEvery},
    {"walk", "SPEED [every TIME|METRESm] LAT,LON...",
     "Walk from one place to the next at so many metres a second, with a fix every second, every\n"
     "      so often or every so many metres. With one place, from where the device is.",
     walk},
    {"track", "FILE [FACTOR]",
     "Move as a GPX file or an NMEA 0183 log has recorded, or at so many times that speed.", track},
};

}  // namespace

constinit const std::span<const Command> kWorldCommands = kWorldRows;

}  // namespace tavsim
