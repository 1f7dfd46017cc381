/* Colours as SDL_gfx takes them: red, green, blue, opacity. */
#ifndef INSTRUMENTS_COLORS_H
#define INSTRUMENTS_COLORS_H

#define BACKGROUND 0x0b1118ff
#define PANEL 0x151f2aff
#define PANEL_ON 0x1d4a48ff
#define BEZEL 0x243443ff
#define FACE 0x101923ff
#define WHITE 0xf2f6f9ff
#define GREY 0x8b9dadff
#define TEAL 0x3fd0b6ff
#define RED 0xff6655ff

#endif
