/* Draws noise at each key, until it is asked to quit, without libtav. */
#include <stdlib.h>

#include "SDL.h"

int main(void)
{
    SDL_Event event;
    SDL_Surface *screen = NULL;
    int n;

    if (SDL_Init(SDL_INIT_VIDEO) == 0) {
        screen = SDL_SetVideoMode(480, 800, 32, SDL_SWSURFACE);
    }
    while (screen != NULL && SDL_WaitEvent(&event) && event.type != SDL_QUIT) {
        for (n = 0; event.type == SDL_KEYDOWN && n < screen->h * screen->pitch; ++n) {
            ((Uint8 *)screen->pixels)[n] = (Uint8)rand();
        }
        SDL_Flip(screen);
    }
    SDL_Quit();
    return screen == NULL;
}
