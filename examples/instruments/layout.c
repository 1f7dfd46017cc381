#include "layout.h"

SDL_Rect rectangle(int x, int y, int width, int height)
{
    SDL_Rect made = {(Sint16)x, (Sint16)y, (Uint16)width, (Uint16)height};
    return made;
}

/* Each cut takes a piece off the rest, and a gap with it. */
static SDL_Rect cut_top(SDL_Rect *rest, int height, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y, rest->w, height);
    *rest = rectangle(rest->x, rest->y + height + gap, rest->w, rest->h - height - gap);
    return piece;
}

static SDL_Rect cut_bottom(SDL_Rect *rest, int height, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y + rest->h - height, rest->w, height);
    *rest = rectangle(rest->x, rest->y, rest->w, rest->h - height - gap);
    return piece;
}

static SDL_Rect cut_left(SDL_Rect *rest, int width, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y, width, rest->h);
    *rest = rectangle(rest->x + width + gap, rest->y, rest->w - width - gap, rest->h);
    return piece;
}

static void lay_out_keys(struct Layout *layout, SDL_Rect area, int rows, int gap)
{
    int columns = KEY_COUNT / rows;
    int width = area.w + gap;
    int height = area.h + gap;
    int i;

    for (i = 0; i < KEY_COUNT; ++i) {
        int column = i % columns, row = i / columns;
        int left = width * column / columns, right = width * (column + 1) / columns;
        int top = height * row / rows, bottom = height * (row + 1) / rows;
        layout->keys[i] =
            rectangle(area.x + left, area.y + top, right - left - gap, bottom - top - gap);
    }
}

static void lay_out_upright(struct Layout *layout, SDL_Rect rest, int gap)
{
    SDL_Rect facts;

    layout->reply = cut_bottom(&rest, layout->text * 62 / 10, gap);
    facts = cut_bottom(&rest, layout->text * 54 / 10, gap);
    layout->header = cut_top(&rest, 3 * layout->text, gap);
    layout->position = cut_left(&facts, facts.w * 2 / 5, gap);
    layout->speed = cut_left(&facts, (facts.w - gap) / 2, gap);
    layout->altitude = facts;
    layout->dial = rest;
}

static void lay_out_wide(struct Layout *layout, SDL_Rect rest, int gap)
{
    SDL_Rect facts;

    layout->dial = cut_left(&rest, rest.w * 3 / 5, 2 * gap);
    layout->header = cut_top(&rest, layout->text * 34 / 10, gap);
    layout->position = cut_top(&rest, rest.h / 3, gap);
    facts = cut_top(&rest, rest.h / 3, gap);
    layout->speed = cut_left(&facts, (facts.w - gap) / 2, gap);
    layout->altitude = facts;
    layout->reply = rest;
}

/* The size of text of which `across` heights fit into the width and `down` into the height. */
static int text_size(int width, int height, int across, int down)
{
    int size = width / across < height / down ? width / across : height / down;

    return size > 1 ? size : 1;
}

void lay_out(struct Layout *layout, int width, int height)
{
    int is_wide = width > height;
    int text = is_wide ? text_size(width, height, 52, 28) : text_size(width, height, 32, 40);
    int gap = text * 3 / 5;
    SDL_Rect rest = rectangle(text, text, width - 2 * text, height - 2 * text);

    layout->text = text;
    if (is_wide) {
        lay_out_keys(layout, cut_bottom(&rest, 4 * text, 2 * gap), 1, gap);
        lay_out_wide(layout, rest, gap);
    } else {
        lay_out_keys(layout, cut_bottom(&rest, 6 * text + gap, gap), 2, gap);
        lay_out_upright(layout, rest, gap);
    }
}
