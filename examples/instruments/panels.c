#include "panels.h"

#include <math.h>
#include <stdio.h>

#include "SDL_gfxPrimitives.h"
#include "application.h"
#include "colors.h"
#include "text.h"

static SDL_Surface *screen;
static const struct Layout *layout;

static void panel(SDL_Rect area, Uint32 color)
{
    roundedBoxColor(screen, area.x, area.y, (Sint16)(area.x + area.w - 1),
                    (Sint16)(area.y + area.h - 1), (Sint16)(layout->text / 2), color);
}

static SDL_Rect titled_panel(SDL_Rect area, const char *title)
{
    int text = layout->text;

    panel(area, PANEL);
    text_at(screen, area.x + text * 4 / 5, area.y + text * 4 / 5, text * 0.85, GREY, title);
    return rectangle(area.x + text * 4 / 5, area.y + text * 11 / 5, area.w - text * 8 / 5,
                     area.h - text * 27 / 10);
}

static void draw_header(void)
{
    SDL_Rect area = layout->header;
    int text = layout->text;

    text_at(screen, area.x, area.y, text * 1.7, WHITE, app.name);
    text_right(screen, area.x + area.w, area.y, text, TEAL, app.language);
    text_in(screen, rectangle(area.x, area.y + text * 21 / 10, area.w, text), text,
            app.failed ? RED : GREY, app.message);
}

/* One or two lines under a title, as large as there is room. */
static void draw_fact(SDL_Rect area, const char *title, const char *first, const char *second)
{
    SDL_Rect inside = titled_panel(area, title);
    int is_double = *second != '\0';
    double by_height = inside.h / (is_double ? 2.4 : 1.5);
    double by_width = inside.w / (LETTER_WIDTH * (is_double ? 10 : 8));
    double size = by_width < by_height ? by_width : by_height;
    Uint32 color = app.location_on ? WHITE : GREY;

    text_at(screen, inside.x, inside.y, size, color, first);
    text_at(screen, inside.x, inside.y + (int)(size * 1.35), size, color, second);
}

static void draw_facts(void)
{
    char latitude[24] = "--", longitude[24] = "", speed[24] = "--", altitude[24] = "--";

    if (app.has_fix) {
        const TAV_Location *fix = &app.fix;
        snprintf(latitude, sizeof latitude, "%.4f %c", fabs(fix->latitude),
                 fix->latitude < 0 ? 'S' : 'N');
        snprintf(longitude, sizeof longitude, "%.4f %c", fabs(fix->longitude),
                 fix->longitude < 0 ? 'W' : 'E');
        snprintf(speed, sizeof speed, "%.1f m/s", fix->velocity);
        snprintf(altitude, sizeof altitude, "%.0f m", fix->altitude);
    }
    draw_fact(layout->position, "POSITION", latitude, longitude);
    draw_fact(layout->speed, "SPEED", speed, "");
    draw_fact(layout->altitude, "ALTITUDE", altitude, "");
}

static void draw_reply(void)
{
    SDL_Rect inside = titled_panel(layout->reply, "LAST REPLY");
    double size = inside.h > 6 * layout->text ? layout->text * 1.2 : layout->text * 0.9;

    text_in(screen, inside, size, WHITE, app.reply);
}

static void draw_keys(void)
{
    int text = layout->text;
    int i;

    for (i = 0; i < KEY_COUNT; ++i) {
        SDL_Rect key = layout->keys[i];
        int is_on = actions[i].is_on != NULL && *actions[i].is_on;
        int middle = key.x + key.w / 2;
        panel(key, is_on ? PANEL_ON : PANEL);
        text_centered(screen, middle, key.y + key.h / 3, text * 1.2, is_on ? TEAL : WHITE,
                      actions[i].letter);
        text_centered(screen, middle, key.y + key.h * 3 / 4, text * 0.9, is_on ? TEAL : GREY,
                      actions[i].label);
    }
}

void draw(SDL_Surface *target, const struct Layout *places)
{
    screen = target;
    layout = places;
    boxColor(screen, 0, 0, (Sint16)(screen->w - 1), (Sint16)(screen->h - 1), BACKGROUND);
    draw_header();
    draw_compass(screen, layout->dial, &app.compass);
    draw_facts();
    draw_reply();
    draw_keys();
    SDL_Flip(screen);
}
