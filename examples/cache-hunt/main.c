/* Cache hunt: walk to hidden caches, by distance, compass and, for money, a hint.
 *
 *     tavsim run --device device.json cache-hunt
 */
#include <stdio.h>

#include "hunt.h"
#include "picture.h"

#define FRAME 50 /* milliseconds */

static void handle_events(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        if (event.type == SDL_USEREVENT) {
            on_user_event(&event.user);
        } else if (event.type == SDL_KEYDOWN) {
            press_key(event.key.keysym.sym);
        } else if (event.type == SDL_MOUSEBUTTONDOWN) {
            press_at(on_canvas(event.button.x), on_canvas(event.button.y));
        } else if (event.type == SDL_VIDEOEXPOSE) {
            hunt.changed = 1;
        } else if (event.type == SDL_QUIT) {
            hunt.running = 0;
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
    SDL_WM_SetCaption("Cache hunt", NULL);
    return open_canvas(metrics.widthPixels, metrics.heightPixels);
}

static void run(void)
{
    Uint32 second = 0;

    lay_out();
    start_hunt();
    start_sensors();
    connect_page();
    while (hunt.running) {
        handle_events();
        tend_sensors();
        if (hunt.changed || second != time_taken() / 1000) {
            second = time_taken() / 1000;
            hunt.changed = 0;
            draw();
        }
        SDL_Delay(FRAME);
    }
}

int main(int argc, char *argv[])
{
    int is_open;

    (void)argc;
    (void)argv;
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "cache-hunt: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    is_open = open_window();
    if (is_open) {
        run();
    } else {
        fprintf(stderr, "cache-hunt: %s\n", SDL_GetError());
    }
    TAV_Quit();
    SDL_Quit();
    return is_open ? 0 : 1;
}
