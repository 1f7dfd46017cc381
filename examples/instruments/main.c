/* Instruments: a compass, the position and the last reply of a service, in a window of the device's
 * own size. Keys and touches switch the sensors and ask for actions; their names are on the screen.
 *
 *     tavsim run --device cinnabar instruments
 *
 * Without a display, look at a picture of it:
 *
 *     SDL_VIDEODRIVER=dummy tavsim run --virtual-time instruments --frames 60 --screenshot it.bmp
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "application.h"
#include "layout.h"
#include "panels.h"

#define FRAME 20 /* milliseconds */

static SDL_Surface *screen;
static struct Layout layout;

static void on_key(SDLKey key)
{
    int i;

    for (i = 0; i < KEY_COUNT; ++i) {
        if (actions[i].key == (key == SDLK_ESCAPE ? SDLK_q : key)) {
            actions[i].act();
        }
    }
}

static void on_touch(int x, int y)
{
    int i;

    for (i = 0; i < KEY_COUNT; ++i) {
        SDL_Rect key = layout.keys[i];
        if (x >= key.x && x < key.x + key.w && y >= key.y && y < key.y + key.h) {
            actions[i].act();
        }
    }
}

static void handle_events(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        if (event.type == SDL_USEREVENT) {
            on_user_event(&event.user);
        } else if (event.type == SDL_KEYDOWN) {
            on_key(event.key.keysym.sym);
        } else if (event.type == SDL_MOUSEBUTTONDOWN) {
            on_touch(event.button.x, event.button.y);
        } else if (event.type == SDL_VIDEOEXPOSE) {
            app.changed = 1;
        } else if (event.type == SDL_QUIT) {
            app.running = 0;
        }
    }
}

static int open_window(void)
{
    TAV_ScreenMetrics metrics;

    if (TAV_GetScreenMetrics(&metrics) != TAV_NOERROR) {
        metrics.widthPixels = 320;
        metrics.heightPixels = 480;
    }
    screen = SDL_SetVideoMode(metrics.widthPixels, metrics.heightPixels, 32, SDL_SWSURFACE);
    SDL_WM_SetCaption("Instruments", NULL);
    lay_out(&layout, metrics.widthPixels, metrics.heightPixels);
    return screen != NULL;
}

static void run(int frames)
{
    app.running = 1;
    start_application();
    while (app.running && frames != 0) {
        handle_events();
        if (app.changed) {
            draw(screen, &layout);
            app.changed = 0;
        }
        SDL_Delay(FRAME);
        frames -= frames > 0;
    }
}

static int save(const char *file)
{
    if (file == NULL || SDL_SaveBMP(screen, file) == 0) {
        return 0;
    }
    fprintf(stderr, "instruments: %s\n", SDL_GetError());
    return 1;
}

int main(int argc, char *argv[])
{
    const char *screenshot = NULL;
    int frames = -1; /* no limit */
    int status = 1;
    int i;

    for (i = 1; i + 1 < argc && argv[i][0] == '-'; i += 2) {
        if (strcmp(argv[i], "--screenshot") == 0) {
            screenshot = argv[i + 1];
        } else if (strcmp(argv[i], "--frames") == 0 && atoi(argv[i + 1]) > 0) {
            frames = atoi(argv[i + 1]);
        } else {
            break;
        }
    }
    if (i < argc) {
        fprintf(stderr, "usage: instruments [--frames N] [--screenshot FILE.bmp]\n");
        return 2;
    }
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "instruments: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    if (open_window()) {
        run(frames);
        status = save(screenshot);
    } else {
        fprintf(stderr, "instruments: %s\n", SDL_GetError());
    }
    TAV_Quit();
    SDL_Quit();
    return status;
}
