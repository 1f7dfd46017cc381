/* Shows the keyboard, asks a service and runs until it is asked to quit, or for a minute. */
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

#define STEP 5
#define LONGEST 60000

int main(int argc, char *argv[])
{
    int waited;

    (void)argc;
    (void)argv;
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    TAV_Init(0);
    TAV_SetKeyboardState(SDL_TRUE);
    TAV_ServiceCall("vire://com.vire.battery/status", "{\"from\":\"wait_for_quit\"}");
    for (waited = 0; waited < LONGEST; waited += STEP) {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_QUIT) {
                printf("quit\n");
                TAV_Quit();
                SDL_Quit();
                return 0;
            }
        }
        SDL_Delay(STEP);
    }
    return 1;
}
