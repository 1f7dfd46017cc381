#include "text.h"

#include <stdio.h>
#include <string.h>

#include "SDL_gfxPrimitives.h"
#include "SDL_rotozoom.h"

#define LETTER 8 /* pixels in height and width of the font */

static int text_width(const char *text, double size)
{
    return (int)((int)strlen(text) * size * LETTER_WIDTH);
}

/* A large font would show its pixels. Smooth scaling blurs the letters instead. Narrowing the blur
 * to one pixel leaves smooth outlines. */
static void sharpen(SDL_Surface *letters, double scale, Uint32 color)
{
    int x, y;

    for (y = 0; y < letters->h; ++y) {
        Uint32 *row = (Uint32 *)((Uint8 *)letters->pixels + y * letters->pitch);
        for (x = 0; x < letters->w; ++x) {
            double cover = ((row[x] >> 24) - 127.5) * scale + 127.5;
            Uint32 opacity = cover < 0 ? 0 : cover > 255 ? 255 : (Uint32)cover;
            row[x] = (color & 0xffffff00) | opacity;
        }
    }
}

SDL_Surface *text_surface(const char *text, double size, Uint32 color)
{
    double scale = size / LETTER;
    SDL_Surface *small = SDL_CreateRGBSurface(SDL_SWSURFACE, LETTER * (int)strlen(text), LETTER, 32,
                                              0xff000000, 0x00ff0000, 0x0000ff00, 0x000000ff);
    SDL_Surface *large;

    stringColor(small, 0, 0, text, 0xffffffff);
    large = zoomSurface(small, scale * LETTER_WIDTH, scale, SMOOTHING_ON);
    SDL_FreeSurface(small);
    sharpen(large, scale, color);
    return large;
}

void put_centered(SDL_Surface *screen, SDL_Surface *surface, int x, int y)
{
    SDL_Rect place = {(Sint16)(x - surface->w / 2), (Sint16)(y - surface->h / 2), 0, 0};

    SDL_BlitSurface(surface, NULL, screen, &place);
    SDL_FreeSurface(surface);
}

void text_at(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text)
{
    SDL_Surface *letters;
    SDL_Rect place = {(Sint16)x, (Sint16)y, 0, 0};

    if (*text == '\0') {
        return;
    }
    letters = text_surface(text, size, color);
    SDL_BlitSurface(letters, NULL, screen, &place);
    SDL_FreeSurface(letters);
}

void text_right(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text)
{
    text_at(screen, x - text_width(text, size), y, size, color, text);
}

void text_centered(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text)
{
    if (*text != '\0') {
        put_centered(screen, text_surface(text, size, color), x, y);
    }
}

/* How many characters go into a line, which ends after a comma where possible. */
static int line_length(const char *text, int most)
{
    int length = (int)strlen(text);

    if (length <= most) {
        return length;
    }
    for (length = most; length > 0; --length) {
        if (text[length - 1] == ',') {
            return length;
        }
    }
    return most;
}

void text_in(SDL_Surface *screen, SDL_Rect area, double size, Uint32 color, const char *text)
{
    char line[128];
    int most = (int)(area.w / (size * LETTER_WIDTH));
    int bottom = area.y + area.h;
    int y;

    most = most < (int)sizeof line ? most : (int)sizeof line - 1;
    for (y = area.y; *text != '\0' && y + size <= bottom; y += (int)(size * 1.4)) {
        int length = line_length(text, most);
        int is_cut = text[length] != '\0' && y + size * 2.4 > bottom;
        snprintf(line, sizeof line, "%.*s%s", is_cut ? most - 3 : length, text,
                 is_cut ? "..." : "");
        text_at(screen, area.x, y, size, color, line);
        text += length;
    }
}
