// Commands for where the device is, where it goes, and what its compass tells.
#include <cmath>
#include <memory>
#include <vector>

#include "simulator/bus/bus.h"
#include "simulator/bus/location.h"
#include "simulator/control/command_functions.h"
#include "simulator/control/pattern.h"
#include "simulator/host/compass.h"
#include "simulator/world/position.h"
#include "simulator/world/track.h"
#include "simulator/world/walk.h"

namespace tavsim {
namespace {

constexpr double kSlowest = 0.01;  // metres a second
constexpr double kFastest = 10000.0;
constexpr double kShortestPause = 0.001;  // seconds
constexpr double kLeastFactor = 0.001;
constexpr double kGreatestFactor = 1000.0;
constexpr Fix kNobodyKnowsWhere = {0, 0, 0, 5, 10, 0, 0};

// Empty for a place on the earth.
std::string whyNoPlace(const Place& place) {
    if (std::abs(place.latitude) > kHighestLatitude) {
        return "the latitude is from -90 to 90";
    }
    return std::abs(place.longitude) > kHighestLongitude ? "the longitude is from -180 to 180" : "";
}

// LAT,LON
bool readPlace(std::string_view word, Place* place) {
    const size_t comma = word.find(',');
    return comma != std::string_view::npos &&
           Words(word.substr(0, comma)).areNumbers(&place->latitude) &&
           Words(word.substr(comma + 1)).areNumbers(&place->longitude);
}

// TIME or METRESm, as metres.
std::optional<double> readInterval(std::string_view word, double speed) {
    if (const std::optional<Milliseconds> time = readTime(word)) {
        return speed * static_cast<double>(*time) / 1000;
    }
    double metres = 0;
    return word.ends_with('m') && Words(word.substr(0, word.size() - 1)).areNumbers(&metres)
               ? std::optional(metres)
               : std::nullopt;
}

struct WalkOrder {
    double speed = 0;
    double metres = 0;  // from one fix to the next
    std::vector<Place> places;
};

std::optional<WalkOrder> readWalk(Words words) {
    WalkOrder order;
    if (!words.takeNumbers(&order.speed)) {
        return std::nullopt;
    }
    order.metres = order.speed;
    Words behindEvery = words;
    if (behindEvery.next() == "every") {
        const std::optional<double> metres = readInterval(behindEvery.next(), order.speed);
        if (!metres) {
            return std::nullopt;
        }
        order.metres = *metres;
        words = behindEvery;
    }
    while (!words.isEmpty()) {
        if (!readPlace(words.next(), &order.places.emplace_back())) {
            return std::nullopt;
        }
    }
    return order.places.empty() ? std::nullopt : std::optional(order);
}

std::string whyNoWalk(const WalkOrder& order) {
    if (!(order.speed >= kSlowest && order.speed <= kFastest)) {
        return "the speed is from 0.01 to 10000 metres a second";
    }
    if (!(order.metres / order.speed >= kShortestPause)) {
        return "there is at least a millisecond from one fix to the next";
    }
    for (const Place& place : order.places) {
        std::string reason = whyNoPlace(place);
        if (!reason.empty()) {
            return reason;
        }
    }
    return order.places.size() == 1 && !presentFix()
               ? "the device has no position yet to walk from; begin with one"
               : "";
}

}  // namespace

CommandOutcome compass(Words words) {
    CompassReading reading;
    if (!words.areNumbers(&reading.intValue, &reading.doubleValue1, &reading.doubleValue2)) {
        return std::nullopt;
    }
    if (!deliverCompassReading(reading)) {
        return failed("compass: the application has not called TAV_Init");
    }
    return CommandResult();
}

CommandOutcome compassFollow(Words words) {
    const std::string_view value = words.next();
    if ((value != "on" && value != "off") || !words.isEmpty()) {
        return std::nullopt;
    }
    letCompassFollow(value == "on");
    return CommandResult();
}

CommandOutcome location(Words words) {
    Fix fix;
    if (!words.areNumbers(&fix.latitude, &fix.longitude, &fix.altitude, &fix.horizAccuracy,
                          &fix.vertAccuracy, &fix.heading, &fix.velocity)) {
        return std::nullopt;
    }
    const std::string reason = whyNoPlace({fix.latitude, fix.longitude});
    if (!reason.empty()) {
        return failed("location: " + reason);
    }
    placeDevice(fix);
    return CommandResult();
}

CommandOutcome locationError(Words words) {
    int code = 0;
    if (!words.areNumbers(&code)) {
        return std::nullopt;
    }
    return replyToAll(kLocationUri, locationErrorReply(code));
}

CommandOutcome locationLost(Words words) {
    int code = kNoFix;
    if (!words.isEmpty() && !words.areNumbers(&code)) {
        return std::nullopt;
    }
    loseLocation(code);
    return CommandResult();
}

CommandOutcome locationFound(Words words) {
    if (!words.isEmpty()) {
        return std::nullopt;
    }
    return findLocation() ? CommandResult() : failed("location found: it is not lost");
}

CommandOutcome walk(Words words) {
    std::optional<WalkOrder> order = readWalk(words);
    if (!order) {
        return std::nullopt;
    }
    const std::string reason = whyNoWalk(*order);
    if (!reason.empty()) {
        return failed("walk: " + reason);
    }
    const std::optional<Fix> present = presentFix();
    if (order->places.size() == 1) {
        order->places.insert(order->places.begin(), {present->latitude, present->longitude});
    }
    setOut("walking", walkAlong(order->places, order->speed, order->metres,
                                present.value_or(kNobodyKnowsWhere)));
    return CommandResult();
}

CommandOutcome track(Words words) {
    double factor = 1.0;
    const std::string_view file = words.restBeforeNumber(&factor);
    if (file.empty()) {
        return std::nullopt;
    }
    if (!(factor >= kLeastFactor && factor <= kGreatestFactor)) {
        return failed("track: the factor is from 0.001 to 1000");
    }
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

}  // namespace tavsim
