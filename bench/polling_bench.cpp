// SDL_PollEvent while the library is in use, compared with SDL alone.
#include <dlfcn.h>

#include "SDL.h"
#include "bench/bench_device.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kSlow[] = "vire://com.example.bench/slow";

void onSlowReply(TAV_ServiceParameters*, void*) {
}

using Poll = int (*)(SDL_Event*);

// SDL's own function, without the interposed one.
Poll sdlsPoll() {
    void* sdl = dlopen("libSDL-1.2.so.0", RTLD_LAZY | RTLD_NOLOAD);
    return sdl != nullptr ? reinterpret_cast<Poll>(dlsym(sdl, "SDL_PollEvent")) : nullptr;
}

void poll(benchmark::State& state, Poll poll) {
    if (poll == nullptr) {
        state.SkipWithError("SDL's own function is not there");
        return;
    }
    expect(state, SDL_Init(SDL_INIT_VIDEO) == 0, SDL_GetError());
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    int found = 0;
    for (auto _ : state) {
        SDL_Event event;
        found += poll(&event);
    }
    expect(state, found == 0, "there were events");
    SDL_Quit();
}

// The device runs in real time, with a control socket and a delivery in its queue.
void pollLibtav(benchmark::State& state) {
    tavsim::Options options;
    options.control = true;
    tavsim::Profile profile;
    profile.services[kSlow] = tavsim::Service{};
    profile.services[kSlow].replies = {"{}"};
    profile.services[kSlow].delay = 3600 * 1000;
    const BenchDevice device(state, profile, options);
    TAV_ServiceCallWithCallback(kSlow, "{}", onSlowReply, nullptr, SDL_TRUE);
    poll(state, SDL_PollEvent);
}
BENCHMARK(pollLibtav);

// SDL's own function calls the interposed SDL_PumpEvents, which only passes on without a device.
void pollBare(benchmark::State& state) {
    poll(state, sdlsPoll());
}
BENCHMARK(pollBare);

}  // namespace
