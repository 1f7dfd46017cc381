/* Handles SDL's events until it is asked to quit, without libtav. */
#include "SDL.h"

int main(void)
{
    SDL_Event event;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        return 2;
    }
    while (SDL_WaitEvent(&event) && event.type != SDL_QUIT) {
    }
    SDL_Quit();
    return 0;
}
