#include "simulator/world/walk.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavsim {
namespace {

constexpr double kPlaces = 1e7;   // about a centimetre
constexpr double kLargest = 1e9;  // a larger double has no such digits
constexpr double kHundredths = 100.0;
constexpr double kNearby = 0.01;  // metres; below that, the direction is undefined

double rounded(double value, double parts) {
    return std::abs(value) < kLargest ? std::round(value * parts) / parts : value;
}

struct Leg {
    Place from;
    Place to;
    double bearing;
    double begin;  // metres from the start of the walk
    double end;
};

class Walk {
public:
    Walk(const std::vector<Place>& places, double speed, double metres, const Fix& like)
        : m_speed(speed), m_metres(metres), m_fix(like) {
        m_fix.latitude = places.front().latitude;
        m_fix.longitude = places.front().longitude;
        for (size_t i = 1; i < places.size(); ++i) {
            const Place& from = places[i - 1];
            const double length = distanceBetween(from, places[i]);
            if (length > 0) {
                m_legs.push_back(
                    {from, places[i], bearingTo(from, places[i]), m_length, m_length + length});
                m_length += length;
            }
        }
    }

    std::optional<Moment> next() {
        if (m_hasArrived) {
            return std::nullopt;
        }
        const double way = std::min(m_steps++ * m_metres, m_length);
        m_hasArrived = way >= m_length;
        go(way);
        return Moment{std::llround(way / m_speed * 1000), roundedFix(m_fix)};
    }

private:
    void go(double way) {
        m_fix.velocity = m_hasArrived ? 0.0 : m_speed;
        if (m_legs.empty()) {
            return;
        }
        while (m_leg + 1 < m_legs.size() && way >= m_legs[m_leg].end) {
            ++m_leg;
        }
        const Leg& leg = m_legs[m_leg];
        const Place place = m_hasArrived ? leg.to : placeAt(leg.from, leg.bearing, way - leg.begin);
        m_fix.latitude = place.latitude;
        m_fix.longitude = place.longitude;
        if (leg.end - way > kNearby) {
            m_fix.heading = bearingTo(place, leg.to);
        } else {
            m_fix.heading = std::fmod(bearingTo(leg.to, leg.from) + 180.0, 360.0);
        }
    }

    double m_speed;
    double m_metres;
    Fix m_fix;
    std::vector<Leg> m_legs;
    double m_length = 0;
    size_t m_leg = 0;
    double m_steps = 0;
    bool m_hasArrived = false;
};

constexpr double kRadius = 6371008.8;  // the mean radius in metres
constexpr double kFullTurn = 360.0;
constexpr double kHalfTurn = 180.0;

double radians(double degrees) {
    return degrees * std::numbers::pi / kHalfTurn;
}

double degrees(double radians) {
    return radians * kHalfTurn / std::numbers::pi;
}

}  // namespace

double distanceBetween(const Place& from, const Place& to) {
    const double north = std::sin(radians(to.latitude - from.latitude) / 2);
    const double east = std::sin(radians(to.longitude - from.longitude) / 2);
    const double share = north * north + std::cos(radians(from.latitude)) *
                                             std::cos(radians(to.latitude)) * east * east;
    return 2 * kRadius * std::asin(std::sqrt(std::min(1.0, share)));
}

double bearingTo(const Place& from, const Place& to) {
    const double turn = radians(to.longitude - from.longitude);
    const double east = std::sin(turn) * std::cos(radians(to.latitude));
    const double north =
        std::cos(radians(from.latitude)) * std::sin(radians(to.latitude)) -
        std::sin(radians(from.latitude)) * std::cos(radians(to.latitude)) * std::cos(turn);
    return std::fmod(degrees(std::atan2(east, north)) + kFullTurn, kFullTurn);
}

Place placeAt(const Place& from, double bearing, double distance) {
    const double angle = distance / kRadius;
    const double latitude = radians(from.latitude);
    const double sine = std::sin(latitude) * std::cos(angle) +
                        std::cos(latitude) * std::sin(angle) * std::cos(radians(bearing));
    const double east = std::sin(radians(bearing)) * std::sin(angle) * std::cos(latitude);
    const double north = std::cos(angle) - std::sin(latitude) * sine;
    return {degrees(std::asin(std::clamp(sine, -1.0, 1.0))),
            std::remainder(from.longitude + degrees(std::atan2(east, north)), kFullTurn)};
}

Fix roundedFix(Fix fix) {
    fix.latitude = rounded(fix.latitude, kPlaces);
    fix.longitude = rounded(fix.longitude, kPlaces);
    fix.heading = std::fmod(rounded(fix.heading, kHundredths), 360.0);
    fix.velocity = rounded(fix.velocity, kHundredths);
    return fix;
}

Way walkAlong(const std::vector<Place>& places, double speed, double metres, const Fix& like) {
    return [walk = Walk(places, speed, metres, like)]() mutable { return walk.next(); };
}

}  // namespace tavsim
