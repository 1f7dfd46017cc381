#include <string.h>

#include "SDL_gfxPrimitives.h"
#include "picture.h"

#define LEAST_WIDTH 240 /* pixels that the picture needs */
#define LEAST_HEIGHT 250

SDL_Surface *canvas;
static int scale;

int open_canvas(int width, int height)
{
    SDL_Surface *screen = SDL_SetVideoMode(width, height, 32, SDL_SWSURFACE);

    if (screen == NULL) {
        return 0;
    }
    for (scale = 1; width / (scale + 1) >= LEAST_WIDTH && height / (scale + 1) >= LEAST_HEIGHT;) {
        ++scale;
    }
    canvas = SDL_CreateRGBSurface(SDL_SWSURFACE, (width + scale - 1) / scale,
                                  (height + scale - 1) / scale, 32, screen->format->Rmask,
                                  screen->format->Gmask, screen->format->Bmask, 0);
    return canvas != NULL;
}

static Uint32 *row_of(SDL_Surface *surface, int y)
{
    return (Uint32 *)((Uint8 *)surface->pixels + y * surface->pitch);
}

void show_canvas(void)
{
    SDL_Surface *screen = SDL_GetVideoSurface();
    int x, y;

    for (y = 0; y < screen->h; ++y) {
        for (x = 0; x < screen->w; ++x) {
            row_of(screen, y)[x] = row_of(canvas, y / scale)[x / scale];
        }
    }
    SDL_Flip(screen);
}

int on_canvas(int pixel)
{
    return pixel / scale;
}

void fill(SDL_Rect area, Uint32 color)
{
    boxColor(canvas, area.x, area.y, (Sint16)(area.x + area.w - 1), (Sint16)(area.y + area.h - 1),
             color);
}

void write_at(int x, int y, Uint32 color, const char *text)
{
    stringColor(canvas, (Sint16)x, (Sint16)y, text, color);
}

void write_centered(int x, int y, Uint32 color, const char *text)
{
    write_at(x - (int)strlen(text) * LETTER / 2, y - LETTER / 2, color, text);
}

/* Enlarges the letters in place, from the far corner on: no pixel is overwritten too early. */
void write_large(int x, int y, Uint32 color, const char *text)
{
    int width = (int)strlen(text) * LETTER * LARGE;
    int i, j;

    write_at(x, y, color, text);
    for (j = LETTER * LARGE - 1; j >= 0; --j) {
        for (i = width - 1; i >= 0; --i) {
            row_of(canvas, y + j)[x + i] = row_of(canvas, y + j / LARGE)[x + i / LARGE];
        }
    }
}
