/* A plug-in for the tests of its page: it gives back what it gets, tells where it is touched and
 * what is typed, and shows it. */
#include <stdio.h>
#include <stdlib.h>

#include "SDL.h"
#include "tav.h"

static int running = 1;
static char answer[64];

static const char *first(TAV_JSParameters *parameters)
{
    return parameters->parameters[0] ? parameters->parameters[0] : "null";
}

static void on_echo(TAV_JSParameters *parameters)
{
    TAV_JSReply(parameters, first(parameters));
}

static void on_back(TAV_JSParameters *parameters)
{
    const char *arguments[] = {first(parameters), NULL};

    TAV_CallJS("back", arguments, 2);
}

static void on_refuse(TAV_JSParameters *parameters)
{
    TAV_JSException(parameters, TAV_GetJSParamString(parameters, 0));
}

/* Asks the page, and lets it call until it has answered. */
static void on_ask(TAV_JSParameters *parameters)
{
    on_back(parameters);
    while (answer[0] == '\0') {
        SDL_PollEvent(NULL);
        SDL_Delay(1);
    }
    TAV_JSReply(parameters, answer);
}

static void on_answer(TAV_JSParameters *parameters)
{
    snprintf(answer, sizeof answer, "%s", TAV_GetJSParamString(parameters, 0));
}

static void on_hang(TAV_JSParameters *parameters)
{
    (void)parameters;
    while (1) {
        SDL_Delay(1000);
    }
}

static void on_flood(TAV_JSParameters *parameters)
{
    static char text[1 << 20];
    const char *arguments[] = {text};
    int calls = 0;
    int index;

    for (index = 0; index < (int)sizeof text - 1; ++index) {
        text[index] = 'x';
    }
    while (calls < 1000 && TAV_CallJS("flood", arguments, 1) == TAV_NOERROR) {
        ++calls;
    }
    snprintf(answer, sizeof answer, "%d", calls);
    TAV_JSReply(parameters, answer);
}

static void on_quit(TAV_JSParameters *parameters)
{
    (void)parameters;
    running = 0;
}

static void tell(const char *what, int first, int second)
{
    char text[64];
    const char *arguments[] = {text, NULL};

    snprintf(text, sizeof text, "%s %d %d", what, first, second);
    TAV_CallJS("back", arguments, 2);
}

static void handle(const SDL_Event *event, SDL_Surface *screen)
{
    if (event->type == SDL_QUIT) {
        running = 0;
    } else if (event->type == SDL_MOUSEBUTTONDOWN) {
        SDL_Rect place = {event->button.x - 10, event->button.y - 10, 20, 20};
        SDL_FillRect(screen, &place, SDL_MapRGB(screen->format, 255, 0, 0));
        SDL_Flip(screen);
        tell("touched", event->button.x, event->button.y);
    } else if (event->type == SDL_KEYDOWN) {
        tell("key", event->key.keysym.sym, event->key.keysym.unicode);
    }
}

int main(void)
{
    SDL_Surface *screen;
    SDL_Event event;

    SDL_Init(SDL_INIT_VIDEO);
    SDL_EnableUNICODE(1);
    screen = SDL_SetVideoMode(240, 160, 32, SDL_SWSURFACE);
    TAV_Init(0);
    TAV_RegisterJSHandler("echo", on_echo);
    TAV_RegisterJSHandler("back", on_back);
    TAV_RegisterJSHandler("refuse", on_refuse);
    TAV_RegisterJSHandler("ask", on_ask);
    TAV_RegisterJSHandler("answer", on_answer);
    TAV_RegisterJSHandler("hang", on_hang);
    TAV_RegisterJSHandler("flood", on_flood);
    TAV_RegisterJSHandler("quit", on_quit);
    if (screen == NULL || TAV_JSRegistrationComplete() != TAV_NOERROR) {
        return 1;
    }
    while (running) {
        while (SDL_PollEvent(&event)) {
            handle(&event, screen);
        }
        SDL_Delay(2);
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
