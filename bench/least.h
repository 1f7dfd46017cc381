// The processor time of short functions.
#pragma once

#include <algorithm>
#include <ctime>
#include <limits>

namespace tavbench {

// Of all threads, in nanoseconds.
inline double processorTime() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

// The processor time of one call, the minimum of many rounds of `calls` calls.
template <typename Function>
double least(int calls, Function function) {
    constexpr int kRounds = 50;
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < kRounds; ++round) {
        const double start = processorTime();
        for (int call = 0; call < calls; ++call) {
            function();
        }
        best = std::min(best, (processorTime() - start) / calls);
    }
    return best;
}

}  // namespace tavbench
