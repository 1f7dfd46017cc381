/* Looks at a picture that a program has saved: check_picture FILE.bmp WIDTH HEIGHT
 *
 * It must have that size, and something must be drawn in each of its nine parts. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "SDL.h"

#define GRID 3

static int is_of_one_color(const SDL_Surface *picture, int column, int row)
{
    const int bytes = picture->format->BytesPerPixel;
    const int left = picture->w * column / GRID;
    const int top = picture->h * row / GRID;
    const Uint8 *first = (const Uint8 *)picture->pixels + top * picture->pitch + left * bytes;
    int x, y;

    for (y = top; y < picture->h * (row + 1) / GRID; ++y) {
        const Uint8 *line = (const Uint8 *)picture->pixels + y * picture->pitch;
        for (x = left; x < picture->w * (column + 1) / GRID; ++x) {
            if (memcmp(line + x * bytes, first, (size_t)bytes) != 0) {
                return 0;
            }
        }
    }
    return 1;
}

int main(int argc, char *argv[])
{
    SDL_Surface *picture = argc == 4 ? SDL_LoadBMP(argv[1]) : NULL;
    int part;

    if (picture == NULL) {
        fprintf(stderr, "no picture: %s\n", SDL_GetError());
        return 1;
    }
    if (picture->w != atoi(argv[2]) || picture->h != atoi(argv[3])) {
        fprintf(stderr, "the picture has %d x %d pixels\n", picture->w, picture->h);
        return 1;
    }
    for (part = 0; part < GRID * GRID; ++part) {
        if (is_of_one_color(picture, part % GRID, part / GRID)) {
            fprintf(stderr, "nothing is drawn in part %d of %d\n", part + 1, GRID * GRID);
            return 1;
        }
    }
    SDL_FreeSurface(picture);
    return 0;
}
