/* Waits in every way that SDL offers, without libtav, and prints the time after each. */
#include <stdio.h>

#include "SDL.h"

static Uint32 push(Uint32 interval, void *unused)
{
    SDL_Event event = {SDL_USEREVENT};

    (void)unused;
    SDL_PushEvent(&event);
    return interval;
}

int main(void)
{
    SDL_Event event;
    int ticks = 0;

    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    SDL_AddTimer(20, push, NULL);
    while (ticks < 50 && SDL_WaitEvent(&event)) {
        ticks += event.type == SDL_USEREVENT;
    }
    printf("%u\n", SDL_GetTicks());
    SDL_Delay(3600 * 1000);
    printf("%u\n", SDL_GetTicks());
    while (SDL_GetTicks() < 3601 * 1000 + 20) {
        SDL_PollEvent(&event);
    }
    printf("%u\n", SDL_GetTicks());
    SDL_Quit();
    return 0;
}
