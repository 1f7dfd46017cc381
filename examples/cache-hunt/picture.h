/* The picture, in large pixels: a small canvas, which is enlarged to a screen of any size.
 *
 * Colours are as SDL_gfx takes them: red, green, blue, opacity. */
#ifndef CACHE_HUNT_PICTURE_H
#define CACHE_HUNT_PICTURE_H

#include "SDL.h"

#define BACKGROUND 0x0c1a1cff
#define PANEL 0x15292bff
#define LINE 0x2b4a4aff
#define WHITE 0xeef5e6ff
#define GREY 0x86a39cff
#define MINT 0x62e0b0ff
#define AMBER 0xffc75aff
#define RED 0xff6d5aff
#define BLUE 0x4f9fe8ff

#define LETTER 8 /* width and height of a letter */
#define LARGE 3  /* scale of large letters */
#define DIAMOND "\x04"
#define UP "\x18"
#define DOWN "\x19"

/* canvas.c: drawing */

extern SDL_Surface *canvas;

/* Opens the window. Returns 0 when SDL cannot. */
int open_canvas(int width, int height);

/* Shows what has been drawn. */
void show_canvas(void);

/* Converts a coordinate on the screen to one on the canvas. */
int on_canvas(int pixel);

void fill(SDL_Rect area, Uint32 color);
void write_at(int x, int y, Uint32 color, const char *text);
void write_centered(int x, int y, Uint32 color, const char *text);

/* The background must be of one colour. */
void write_large(int x, int y, Uint32 color, const char *text);

/* radar.c: the player's surroundings, seen from above, with the heading at the top */

void draw_radar(SDL_Rect area);

/* How near the next cache is, from 0, far away, to less than 1, and the colour for that. */
double heat(void);
Uint32 heat_color(double part);

/* picture.c: the whole picture, and what keys and touches do */

void lay_out(void);
void draw(void);
void press_key(SDLKey key);
void press_at(int x, int y);

#endif
