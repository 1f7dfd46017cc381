/* Calls a service and prints its reply: service_reply [MILLISECONDS], the longest wait for it. Like
 * many applications it calls only libtav and SDL. */
#include <stdio.h>
#include <stdlib.h>

#include "SDL.h"
#include "tav.h"

#define STEP 5

static void on_reply(TAV_ServiceParameters *parameters, void *user_data)
{
    printf("percent %d\n", TAV_GetParamInt(parameters, "percent"));
    *(int *)user_data = 1;
}

int main(int argc, char *argv[])
{
    const int patience = argc > 1 ? atoi(argv[1]) : 60000;
    int answered = 0;
    int waited;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    TAV_Init(0);
    printf("%s\n", TAV_GetHardware());
    if (TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}", on_reply, &answered,
                                    SDL_TRUE) != TAV_NOERROR) {
        fprintf(stderr, "no call: %s\n", TAV_GetError());
        return 2;
    }
    /* A second call must not print a message again that is to appear once. */
    TAV_ServiceCall("vire://com.vire.clock/ticks", "{}");
    for (waited = 0; !answered && waited < patience; waited += STEP) {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {}
        SDL_Delay(STEP);
    }
    TAV_Quit();
    SDL_Quit();
    return answered ? 0 : 1;
}
