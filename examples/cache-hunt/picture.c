#include "picture.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#include "hunt.h"

#define MARGIN 8
#define HEADER 24
#define BUTTON 24
#define BUTTON_COUNT 3
#define PANEL_WIDTH 112
#define PANEL_HEIGHT 58

static void quit(void)
{
    hunt.running = 0;
}

static struct {
    SDLKey key;
    const char *label;
    void (*press)(void);
    SDL_Rect area;
} buttons[BUTTON_COUNT] = {
    {SDLK_h, "H hint", want_hint, {0, 0, 0, 0}},
    {SDLK_r, "R again", start_hunt, {0, 0, 0, 0}},
    {SDLK_q, "Q quit", quit, {0, 0, 0, 0}},
};

static SDL_Rect radar, panel;
static int message_y;

static SDL_Rect rectangle(int x, int y, int width, int height)
{
    SDL_Rect made = {(Sint16)x, (Sint16)y, (Uint16)width, (Uint16)height};
    return made;
}

void lay_out(void)
{
    int width = canvas->w - 2 * MARGIN, step = (width + MARGIN) / BUTTON_COUNT;
    int button_y = canvas->h - BUTTON - MARGIN, bottom = button_y - LETTER - 2 * MARGIN;
    int height = bottom - HEADER;
    int i;

    message_y = bottom + MARGIN;
    if (canvas->w > canvas->h) {
        panel = rectangle(MARGIN + width - PANEL_WIDTH, HEADER, PANEL_WIDTH, height);
        radar = rectangle(MARGIN, HEADER, width - PANEL_WIDTH - MARGIN, height);
    } else {
        panel = rectangle(MARGIN, bottom - PANEL_HEIGHT, width, PANEL_HEIGHT);
        radar = rectangle(MARGIN, HEADER, width, height - PANEL_HEIGHT - MARGIN);
    }
    for (i = 0; i < BUTTON_COUNT; ++i) {
        buttons[i].area = rectangle(MARGIN + i * step, button_y, step - MARGIN, BUTTON);
    }
}

void press_key(SDLKey key)
{
    int i;

    for (i = 0; i < BUTTON_COUNT; ++i) {
        if (buttons[i].key == key) {
            buttons[i].press();
        }
    }
}

void press_at(int x, int y)
{
    int i;

    for (i = 0; i < BUTTON_COUNT; ++i) {
        SDL_Rect area = buttons[i].area;
        if (x >= area.x && x < area.x + area.w && y >= area.y && y < area.y + area.h) {
            buttons[i].press();
        }
    }
}

static void draw_battery(int x, int y)
{
    char percent[16];

    fill(rectangle(x, y, 18, LETTER), GREY);
    fill(rectangle(x + 18, y + 2, 2, 4), GREY);
    fill(rectangle(x + 1, y + 1, 16, 6), BACKGROUND);
    if (hunt.battery >= 0) {
        snprintf(percent, sizeof percent, "%3d%%", hunt.battery);
        write_at(x - 4 - 4 * LETTER, y, GREY, percent);
        fill(rectangle(x + 1, y + 1, 1 + 15 * hunt.battery / 100, 6),
             hunt.battery < 15 ? RED : MINT);
    }
}

static void draw_header(void)
{
    unsigned seconds = time_taken() / 1000;
    char time[16];

    snprintf(time, sizeof time, "%02u:%02u", seconds / 60, seconds % 60);
    write_at(MARGIN, MARGIN, AMBER, DIAMOND " CACHE HUNT");
    write_at(canvas->w / 2, MARGIN, WHITE, time);
    draw_battery(canvas->w - MARGIN - 20, MARGIN);
}

static void draw_distance(int x, int y)
{
    static const char *const words[] = {"cold", "cool", "warm", "hot"};
    char distance[16] = "---", text[32] = "no position";

    if (hunt.found == CACHE_COUNT) {
        snprintf(distance, sizeof distance, "WON");
        snprintf(text, sizeof text, "well done");
    } else if (hunt.has_fix) {
        snprintf(distance, sizeof distance, "%.0f", hunt.distance);
        snprintf(text, sizeof text, "%s %s", words[(int)(heat() * 4)],
                 hunt.approach > 0.05    ? UP
                 : hunt.approach < -0.05 ? DOWN
                                         : "");
    }
    write_large(x, y, WHITE, distance);
    if (hunt.found < CACHE_COUNT) {
        write_at(x + ((int)strlen(distance) * LARGE + 1) * LETTER, y + 2 * LETTER, GREY, "m");
    }
    write_at(x, y + LETTER * (LARGE + 1), hunt.has_fix ? heat_color(heat()) : GREY, text);
}

static void draw_caches(int x, int y)
{
    char text[32];
    int i;

    for (i = 0; i < CACHE_COUNT; ++i) {
        int is_found = i < hunt.found;
        snprintf(text, sizeof text, DIAMOND " %s", is_found ? caches[i].name : "?");
        write_at(x, y + i * 14, is_found ? AMBER : i == hunt.found ? GREY : LINE, text);
    }
}

static void draw_panel(void)
{
    int x = panel.x + MARGIN, y = panel.y + MARGIN;

    fill(panel, PANEL);
    draw_distance(x, y);
    if (canvas->w > canvas->h) {
        draw_caches(x, y + 64);
    } else {
        draw_caches(panel.x + panel.w - PANEL_WIDTH, y + 2);
    }
}

static void draw_buttons(void)
{
    int i;

    for (i = 0; i < BUTTON_COUNT; ++i) {
        SDL_Rect area = buttons[i].area;
        int is_lit = buttons[i].press == want_hint && (hunt.is_offered || hunt.has_hint);
        fill(area, is_lit ? AMBER : PANEL);
        write_centered(area.x + area.w / 2, area.y + area.h / 2, is_lit ? BACKGROUND : GREY,
                       buttons[i].label);
    }
}

void draw(void)
{
    fill(rectangle(0, 0, canvas->w, canvas->h), BACKGROUND);
    draw_header();
    draw_radar(radar);
    draw_panel();
    write_at(MARGIN, message_y, hunt.is_bad ? RED : WHITE, hunt.message);
    draw_buttons();
    show_canvas();
}
