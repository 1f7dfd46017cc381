// A program whose whole screen changes with each frame. Prints the processor time of a frame in
// nanoseconds: the minimum of many rounds, or with a number of frames their mean, 30 a second.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "SDL.h"
#include "bench/least.h"

namespace {

constexpr int kWidth = 480;
constexpr int kHeight = 800;
constexpr int kFrames = 20;  // in a round
constexpr Uint32 kBetweenFrames = 1000 / 30;

void frame() {
    static Uint32 count = 0;
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    SDL_Surface* screen = SDL_GetVideoSurface();
    ++count;
    for (int y = 0; y < kHeight; ++y) {
        SDL_Rect row = {0, static_cast<Sint16>(y), kWidth, 1};
        SDL_FillRect(screen, &row, (static_cast<Uint32>(y) + count) * 0x010203);
    }
    SDL_Flip(screen);
}

double meanOf(int frames) {
    const double start = tavbench::processorTime();
    for (int left = frames; left > 0; --left) {
        const Uint32 begin = SDL_GetTicks();
        frame();
        const Uint32 taken = SDL_GetTicks() - begin;
        SDL_Delay(taken < kBetweenFrames ? kBetweenFrames - taken : 0);
    }
    return (tavbench::processorTime() - start) / frames;
}

}  // namespace

int main(int argc, char** argv) {
    if (SDL_Init(SDL_INIT_VIDEO) != 0 ||
        SDL_SetVideoMode(kWidth, kHeight, 32, SDL_SWSURFACE) == nullptr) {
        std::fprintf(stderr, "tav_shown: %s\n", SDL_GetError());
        return EXIT_FAILURE;
    }
    if (void* init = dlsym(RTLD_DEFAULT, "TAV_Init")) {
        reinterpret_cast<int (*)(int)>(init)(0);
    }
    std::printf("%.1f\n", argc > 1 ? meanOf(static_cast<int>(std::strtol(argv[1], nullptr, 10)))
                                   : tavbench::least(kFrames, frame));
    SDL_Quit();
    return EXIT_SUCCESS;
}
