// A fresh simulated device for a benchmark, with nobody listening to the trace.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "simulator/interface/device.h"
#include "tav.h"

namespace tavbench {

class BenchDevice {
public:
    explicit BenchDevice(benchmark::State& state, tavsim::Profile profile = {},
                         const tavsim::Options& options = inVirtualTime()) {
        std::string error;
        if (!tavsim::device().start(std::move(profile), options, &error)) {
            state.SkipWithError(error.c_str());
        }
    }

    ~BenchDevice() {
        TAV_Quit();
        tavsim::device().stop();
    }

    static tavsim::Options inVirtualTime() {
        tavsim::Options options;
        options.virtualTime = true;
        return options;
    }

    BenchDevice(const BenchDevice&) = delete;
    BenchDevice& operator=(const BenchDevice&) = delete;
};

// Lets a benchmark fail that has not done its work.
inline void expect(benchmark::State& state, bool condition, const char* what) {
    if (!condition) {
        state.SkipWithError(what);
    }
}

}  // namespace tavbench
