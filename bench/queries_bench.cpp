// Tracing while nobody listens, and queries that do little else.
#include "bench/bench_device.h"
#include "platform/htracker.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

tavsim::Profile phone() {
    tavsim::Profile profile;
    profile.machine = "cinnabar";
    return profile;
}

void entryTrace(benchmark::State& state) {
    const BenchDevice device(state);
    void* pointer = &state;
    for (auto _ : state) {
        benchmark::DoNotOptimize(HTracker_funcTrack("tav_f", __func__, "%p, %d", pointer, 7));
    }
}
BENCHMARK(entryTrace);

void hardwareId(benchmark::State& state) {
    const BenchDevice device(state, phone());
    for (auto _ : state) {
        benchmark::DoNotOptimize(TAV_GetHardwareID());
    }
    expect(state, TAV_GetHardwareID() == 501, "another machine");
}
BENCHMARK(hardwareId);

void screenMetrics(benchmark::State& state) {
    const BenchDevice device(state, phone());
    TAV_ScreenMetrics metrics = {};
    for (auto _ : state) {
        benchmark::DoNotOptimize(TAV_GetScreenMetrics(&metrics));
        benchmark::ClobberMemory();
    }
    expect(state, metrics.widthPixels == 480, "no screen metrics");
}
BENCHMARK(screenMetrics);

void location(benchmark::State& state) {
    const BenchDevice device(state, phone());
    TAV_EnableLocationTracking(SDL_TRUE);
    TAV_Location reading = {};
    int result = TAV_EOTHER;
    for (auto _ : state) {
        benchmark::DoNotOptimize(result = TAV_GetLocation(&reading));
        benchmark::ClobberMemory();
    }
    expect(state, result == TAV_NOERROR, "no location");
    TAV_EnableLocationTracking(SDL_FALSE);
}
BENCHMARK(location);

void compass(benchmark::State& state) {
    const BenchDevice device(state, phone());
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    TAV_CompassReading reading = {};
    int result = TAV_EOTHER;
    for (auto _ : state) {
        benchmark::DoNotOptimize(result = TAV_GetCompass(&reading));
        benchmark::ClobberMemory();
    }
    expect(state, result == TAV_NOERROR, "no compass reading");
}
BENCHMARK(compass);

}  // namespace
