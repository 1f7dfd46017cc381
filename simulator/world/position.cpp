#include "simulator/world/position.h"

#include <cmath>
#include <random>
#include <utility>

#include "simulator/device/running.h"
#include "simulator/device/state.h"
#include "simulator/time/queue.h"
#include "simulator/world/walk.h"

namespace tavsim {
namespace {

constexpr char kMovement[] = "movement";
constexpr char kLocation[] = "location";

// NOLINTNEXTLINE(cert-msc51-cpp): each receiver begins with the seed that it was given
struct World {
    std::function<void(const Report&)> announce;
    std::optional<Fix> position;
    std::optional<int> lost;  // the error that is sent instead of the position
    Way way;                  // none: the device stands
    bool isNamed = false;     // the way has a name in the device's state
    Milliseconds begin = 0;
    int run = 0;  // incremented with each way, to drop the moments of earlier ones
    bool isPlaced = false;
    bool isWithoutFix = false;  // at this point of the way
    Receiver receiver;
    std::mt19937 errors;  // of the receiver
    int receivers = 0;    // incremented with each, to drop the fixes of earlier ones
};

World& world() {
    // Never destroyed, because the device ends after static objects are destroyed.
    static World& instance = *new World;
    return instance;
}

// From 0 to 1, the same with every standard library.
double nextRandom() {
    return static_cast<double>(world().errors()) / std::mt19937::max();
}

// As the receiver sees it.
Fix received(Fix fix) {
    const double accuracy = world().receiver.accuracy;
    if (accuracy == 0) {
        return fix;
    }
    const double bearing = 360 * nextRandom();
    const double distance = accuracy * std::sqrt(nextRandom());  // evenly over the circle
    const Place place = placeAt({fix.latitude, fix.longitude}, bearing, distance);
    fix.latitude = place.latitude;
    fix.longitude = place.longitude;
    fix.horizAccuracy = accuracy;
    return roundedFix(fix);
}

bool isPeriodic() {
    return world().receiver.every > 0;
}

void announce(const Report& report) {
    const Fix* fix = std::get_if<Fix>(&report);
    world().announce(fix != nullptr ? received(*fix) : report);
}

void announceMovement(const Report& report) {
    if (!isPeriodic() || std::holds_alternative<int>(report)) {
        announce(report);
    }
}

void announceSoon(const Report& report) {
    schedule(now(), "fix", [report] { announceMovement(report); });
}

void scheduleFix() {
    schedule(after(now(), world().receiver.every), "fix", [receiver = world().receivers] {
        if (receiver != world().receivers) {
            return;
        }
        scheduleFix();
        if (world().position && !world().lost && !world().isWithoutFix) {
            announce(*world().position);
        }
    });
}

void endWay(const char* outcome) {
    ++world().run;
    world().way = nullptr;
    world().isWithoutFix = false;
    if (std::exchange(world().isNamed, false)) {
        setState(kMovement, outcome);
    }
}

void reach(const Moment& moment) {
    const Fix* fix = std::get_if<Fix>(&moment.report);
    world().isWithoutFix = fix == nullptr;
    if (fix != nullptr) {
        world().position = *fix;
    }
    if (!world().lost) {
        announceMovement(moment.report);
    }
}

void scheduleMoment() {
    const std::optional<Moment> moment = world().way();
    if (!moment) {
        endWay("arrived");
        return;
    }
    schedule(after(world().begin, moment->at), "fix", [moment = *moment, run = world().run] {
        if (run != world().run) {
            return;
        }
        reach(moment);
        if (run == world().run) {  // the application's function may have changed it
            scheduleMoment();
        }
    });
}

void begin(Way way) {
    world().isPlaced = true;
    world().way = std::move(way);
    world().begin = now();
    scheduleMoment();
}

// The fixes, then the errors, one each interval.
Way wayOfProfile() {
    return [played = size_t{0}]() mutable -> std::optional<Moment> {
        const LocationTrack& track = profile().location;
        const size_t next = played++;
        const Milliseconds at = static_cast<Milliseconds>(played) * track.interval;
        if (next < track.fixes.size()) {
            return Moment{at, track.fixes[next]};
        }
        const size_t error = next - track.fixes.size();
        return error < track.errors.size() ? std::optional(Moment{at, track.errors[error]})
                                           : std::nullopt;
    };
}

}  // namespace

void placeDevice(const Fix& fix) {
    endWay("stopped");
    world().isPlaced = true;
    world().position = fix;
    if (!world().lost) {
        announceSoon(fix);
    }
}

void setOut(const std::string& movement, Way way) {
    endWay("stopped");
    setState(kMovement, movement);
    world().isNamed = true;
    begin(std::move(way));
}

void loseLocation(int code) {
    world().lost = code;
    setState(kLocation, "lost");
    announceSoon(code);
}

bool findLocation() {
    if (!world().lost) {
        return false;
    }
    world().lost.reset();
    setState(kLocation, "found");
    if (world().position) {
        announceSoon(*world().position);
    }
    return true;
}

void setReceiver(const Receiver& receiver) {
    ++world().receivers;
    world().receiver = receiver;
    world().errors.seed(static_cast<unsigned>(receiver.seed));
    if (isPeriodic()) {
        scheduleFix();
    }
}

std::optional<Report> beginTracking() {
    if (!world().isPlaced) {
        begin(wayOfProfile());
    }
    if (world().lost) {
        return *world().lost;
    }
    return world().position ? std::optional<Report>(received(*world().position)) : std::nullopt;
}

std::optional<Fix> presentFix() {
    const std::vector<Fix>& fixes = profile().location.fixes;
    return world().position || fixes.empty() ? world().position : std::optional(fixes.front());
}

std::optional<int> lossOfLocation() {
    return world().lost;
}

void startWorld(std::function<void(const Report&)> announce) {
    world().announce = std::move(announce);
    setReceiver(profile().location.receiver);
}

void stopWorld() {
    const int run = world().run;
    const int receivers = world().receivers;
    world() = World();
    world().run = run + 1;
    world().receivers = receivers + 1;
}

}  // namespace tavsim
