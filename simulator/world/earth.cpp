#include "simulator/world/earth.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavsim {
namespace {

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

}  // namespace tavsim
