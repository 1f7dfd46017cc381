// The arithmetic of paced time.
#pragma once

#include <chrono>

#include "simulator/time/clock.h"

namespace tavsim {

// From a moment of the device's clock at a point of real time, the clock runs so many times as fast
// as real time.
struct Pacing {
    using Clock = std::chrono::steady_clock;
    using RealMilliseconds = std::chrono::duration<double, std::milli>;

    Clock::time_point begin;
    Milliseconds moment = 0;
    double factor = 1;

    // When the moment comes.
    Clock::time_point timeOf(Milliseconds later) const {
        const RealMilliseconds passed(static_cast<double>(later - moment) / factor);
        return begin + std::chrono::duration_cast<Clock::duration>(passed);
    }

    // The last moment that has come.
    Milliseconds momentAt(Clock::time_point time) const {
        return moment + static_cast<Milliseconds>(RealMilliseconds(time - begin).count() * factor);
    }
};

}  // namespace tavsim
