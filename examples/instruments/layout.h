/* Where everything is on a screen of any size: upright or wide, small or large. */
#ifndef INSTRUMENTS_LAYOUT_H
#define INSTRUMENTS_LAYOUT_H

#include "SDL.h"

#define KEY_COUNT 8

struct Layout {
    int text; /* height of small text; everything else is a multiple of it */
    SDL_Rect header, dial, position, speed, altitude, reply;
    SDL_Rect keys[KEY_COUNT];
};

SDL_Rect rectangle(int x, int y, int width, int height);

void lay_out(struct Layout *layout, int width, int height);

#endif
