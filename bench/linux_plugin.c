/* A plug-in with as many native methods as its argument says, of which the last is called. */
#include <stdio.h>
#include <stdlib.h>

#include "SDL.h"
#include "tav.h"

static void answer(TAV_JSParameters *parameters)
{
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

int main(int argc, char *argv[])
{
    int count = argc > 1 ? atoi(argv[1]) : 1;
    SDL_Event event;

    SDL_Init(SDL_INIT_VIDEO);
    TAV_Init(0);
    for (; count > 1; --count) {
        char name[16];
        snprintf(name, sizeof name, "other%d", count);
        TAV_RegisterJSHandler(name, answer);
    }
    TAV_RegisterJSHandler("answer", answer);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        return 1;
    }
    while (SDL_WaitEvent(&event) && event.type != SDL_QUIT) {}
    TAV_Quit();
    SDL_Quit();
    return 0;
}
