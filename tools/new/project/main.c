/* The device vibrates where its screen is touched. */
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

#define SIZE 80   /* of the square that is drawn, in pixels */
#define PERIOD 50 /* of the vibration, in milliseconds */
#define LENGTH 200

static void touch(SDL_Surface *screen, int x, int y)
{
    SDL_Rect square = {(Sint16)(x - SIZE / 2), (Sint16)(y - SIZE / 2), SIZE, SIZE};

    SDL_FillRect(screen, NULL, SDL_MapRGB(screen->format, 12, 26, 28));
    SDL_FillRect(screen, &square, SDL_MapRGB(screen->format, 255, 200, 87));
    SDL_Flip(screen);
    printf("touched at %d, %d\n", x, y);
    if (TAV_Vibrate(PERIOD, LENGTH) != TAV_NOERROR) {
        printf("no vibration: %s\n", TAV_GetError());
    }
}

static SDL_Surface *open_window(void)
{
    TAV_ScreenMetrics metrics;
    char title[80];

    if (TAV_GetScreenMetrics(&metrics) != TAV_NOERROR) {
        metrics.widthPixels = 320;
        metrics.heightPixels = 480;
    }
    if (TAV_GetAppinfoValue("title", title, sizeof title) == TAV_NOERROR) {
        SDL_WM_SetCaption(title, NULL);
    }
    return SDL_SetVideoMode(metrics.widthPixels, metrics.heightPixels, 0, SDL_SWSURFACE);
}

int main(int argc, char *argv[])
{
    SDL_Surface *screen;
    SDL_Event event;

    (void)argc;
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "%s: %s\n", argv[0], SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    screen = open_window();
    if (screen == NULL) {
        fprintf(stderr, "%s: %s\n", argv[0], SDL_GetError());
    }
    while (screen != NULL && SDL_WaitEvent(&event) && event.type != SDL_QUIT) {
        if (event.type == SDL_MOUSEBUTTONDOWN) {
            touch(screen, event.button.x, event.button.y);
        }
    }
    TAV_Quit();
    SDL_Quit();
    return screen != NULL ? 0 : 1;
}
