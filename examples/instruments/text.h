/* Lettering: SDL_gfx's font in any size, with smooth outlines.
 *
 * A size is the height of the letters in pixels, a colour is as in colors.h. */
#ifndef INSTRUMENTS_TEXT_H
#define INSTRUMENTS_TEXT_H

#include "SDL.h"

#define LETTER_WIDTH 0.66 /* as a fraction of the size */
#define DEGREE "\xf8"

/* The letters on a surface of their own, which the caller frees. The text must not be empty. */
SDL_Surface *text_surface(const char *text, double size, Uint32 color);

/* Draws the surface centred at the point, and frees it. */
void put_centered(SDL_Surface *screen, SDL_Surface *surface, int x, int y);

/* A line that begins at the point, ends there or is centred there. */
void text_at(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text);
void text_right(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text);
void text_centered(SDL_Surface *screen, int x, int y, double size, Uint32 color, const char *text);

/* A text in as many lines as there is room for. Dots replace the rest. */
void text_in(SDL_Surface *screen, SDL_Rect area, double size, Uint32 color, const char *text);

#endif
