// A request to a payment service that never answers, waited for in real time to the end.
#include "SDL.h"
#include "bench/bench_device.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

void purchaseTimeout(benchmark::State& state) {
    tavsim::Profile profile;
    profile.services["vire://com.vire.service.payment/getItemInfo"] = {};
    const bool withVideo = SDL_Init(SDL_INIT_VIDEO) == 0;
    expect(state, withVideo, SDL_GetError());
    const BenchDevice device(state, profile, {});
    for (auto _ : state) {
        const TAV_ItemInfo* info = TAV_GetItemInfo("season-pass");
        expect(state, info == nullptr, "an answer came");
    }
    expect(state, tavsim::device().now() >= 15000, "the wait was too short");
    SDL_Quit();
}
BENCHMARK(purchaseTimeout)->Iterations(1)->MeasureProcessCPUTime();

}  // namespace
