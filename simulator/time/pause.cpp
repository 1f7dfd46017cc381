#include "simulator/time/pause.h"

#include <cstdint>

#include "simulator/time/clock.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

enum class Pausing { Off, AfterMoment, AfterDelivery };

constexpr Milliseconds kBeforeAll = -1;

Pausing g_pausing = Pausing::Off;
Milliseconds g_moment = kBeforeAll;
std::uint64_t g_deliveries = 0;

void pauseAfter(Milliseconds moment) {
    g_pausing = Pausing::AfterMoment;
    g_moment = moment;
}

}  // namespace

void pauseTime() {
    pauseAfter(kBeforeAll);
}

void resumeTime() {
    g_pausing = Pausing::Off;
}

void stepToNextMoment() {
    pauseAfter(now());
}

void stepToNextDelivery() {
    g_pausing = Pausing::AfterDelivery;
    g_deliveries = deliveriesMade();
}

bool isTimeHeld() {
    switch (g_pausing) {
    case Pausing::AfterMoment:
        return now() > g_moment;
    case Pausing::AfterDelivery:
        return deliveriesMade() > g_deliveries;
    default:
        return false;
    }
}

}  // namespace tavsim
