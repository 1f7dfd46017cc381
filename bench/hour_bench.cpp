// An hour of virtual time: an application that polls every millisecond while its sensors run.
#include "SDL.h"
#include "bench/bench_device.h"
#include "bench/memory.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr int kMinute = 60 * 1000;
constexpr int kHour = 60 * kMinute;
constexpr long kMostGrownKib = 512;  // in fifty minutes of 57,000 readings

struct Counts {
    long compass = 0;
    long location = 0;
};

void pollFor(int milliseconds, Counts* counts) {
    for (int i = 0; i < milliseconds; ++i) {
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
            if (event.type == SDL_USEREVENT) {
                counts->compass += event.user.code == TAV_EVENT_COMPASS ? 1 : 0;
                counts->location += event.user.code == TAV_EVENT_LOCATION ? 1 : 0;
            }
        }
        SDL_Delay(1);
    }
}

void hourOfVirtualTime(benchmark::State& state) {
    tavsim::Profile profile;
    profile.compass.turn = 6;
    profile.compass.interval = 50;
    profile.location.interval = 1000;
    profile.location.fixes.assign(kHour / 1000, tavsim::Fix{});
    expect(state, SDL_Init(SDL_INIT_VIDEO) == 0, SDL_GetError());
    tavsim::Options options = BenchDevice::inVirtualTime();
    options.journalFile = "/dev/null";
    const BenchDevice device(state, profile, options);
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    TAV_EnableLocationTracking(SDL_TRUE);
    for (auto _ : state) {
        Counts counts;
        pollFor(10 * kMinute, &counts);
        const long before = tavbench::memory().resident;
        pollFor(kHour - 10 * kMinute, &counts);
        const long grown = tavbench::memory().resident - before;
        expect(state, grown < kMostGrownKib, "the memory grows");
        expect(state, counts.compass >= kHour / 50 - 1 && counts.location >= kHour / 1000 - 1,
               "readings are missing");
    }
    TAV_EnableLocationTracking(SDL_FALSE);
    SDL_Quit();
}
BENCHMARK(hourOfVirtualTime)->Iterations(1)->MeasureProcessCPUTime();

}  // namespace
