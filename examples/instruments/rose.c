#include "rose.h"

#include <math.h>
#include <stdio.h>

#include "SDL_gfxPrimitives.h"
#include "SDL_rotozoom.h"
#include "colors.h"
#include "text.h"

static SDL_Surface *screen;

static struct {
    int x, y, radius;
    double heading;
} dial;

/* The point at a bearing and a distance from the centre, as a fraction of the radius. */
static void place(double bearing, double distance, Sint16 *x, Sint16 *y)
{
    double angle = (bearing - dial.heading) * M_PI / 180.0;

    *x = (Sint16)lround(dial.x + sin(angle) * distance * dial.radius);
    *y = (Sint16)lround(dial.y - cos(angle) * distance * dial.radius);
}

static void disc(double distance, Uint32 color)
{
    Sint16 radius = (Sint16)(distance * dial.radius);

    filledCircleColor(screen, (Sint16)dial.x, (Sint16)dial.y, radius, color);
    aacircleColor(screen, (Sint16)dial.x, (Sint16)dial.y, radius, color);
}

static void triangle(const Sint16 *x, const Sint16 *y, Uint32 color)
{
    filledTrigonColor(screen, x[0], y[0], x[1], y[1], x[2], y[2], color);
    aatrigonColor(screen, x[0], y[0], x[1], y[1], x[2], y[2], color);
}

static void tick(double bearing, double from, double half_width, Uint32 color)
{
    Sint16 x[4], y[4];

    place(bearing - half_width, from, &x[0], &y[0]);
    place(bearing + half_width, from, &x[1], &y[1]);
    place(bearing + half_width, 0.93, &x[2], &y[2]);
    place(bearing - half_width, 0.93, &x[3], &y[3]);
    filledPolygonColor(screen, x, y, 4, color);
    aapolygonColor(screen, x, y, 4, color);
}

/* A letter of the scale, turned with it. */
static void mark(double bearing, double size, Uint32 color, const char *text)
{
    SDL_Surface *upright = text_surface(text, size, color);
    Sint16 x, y;

    place(bearing, 0.70, &x, &y);
    put_centered(screen, rotozoomSurface(upright, dial.heading - bearing, 1.0, SMOOTHING_ON), x, y);
    SDL_FreeSurface(upright);
}

static void draw_scale(void)
{
    static const char *const winds[] = {"N", "E", "S", "W"};
    char number[4];
    int bearing;

    for (bearing = 0; bearing < 360; bearing += 5) {
        if (bearing % 30 == 0) {
            tick(bearing, 0.83, 0.3, WHITE);
        } else {
            tick(bearing, bearing % 10 == 0 ? 0.87 : 0.90, 0.1, GREY);
        }
    }
    for (bearing = 0; bearing < 360; bearing += 30) {
        if (bearing % 90 == 0) {
            mark(bearing, dial.radius * 0.17, bearing == 0 ? RED : WHITE, winds[bearing / 90]);
        } else {
            snprintf(number, sizeof number, "%d", bearing);
            mark(bearing, dial.radius * 0.10, GREY, number);
        }
    }
}

/* One ray of the rose: a light and a dark half. */
static void ray(double bearing, double length, Uint32 light, Uint32 dark)
{
    Sint16 x[3], y[3];

    place(bearing, length, &x[0], &y[0]);
    place(bearing, 0.1, &x[1], &y[1]);
    place(bearing - 45, 0.28, &x[2], &y[2]);
    triangle(x, y, light);
    place(bearing + 45, 0.28, &x[2], &y[2]);
    triangle(x, y, dark);
}

static void draw_rose(void)
{
    int bearing;

    for (bearing = 45; bearing < 360; bearing += 90) {
        ray(bearing, 0.46, 0x2c3d4cff, 0x22303cff);
    }
    for (bearing = 0; bearing < 360; bearing += 90) {
        ray(bearing, 0.6, bearing == 0 ? RED : 0x5a6f81ff, bearing == 0 ? 0xb8463bff : 0x3d4f5eff);
    }
}

static void draw_heading(const struct Compass *compass)
{
    static const char *const winds[] = {"N", "NE", "E", "SE", "S", "SW", "W", "NW"};
    char degrees[16] = "---";
    const char *wind = "";

    disc(0.32, BEZEL);
    disc(0.30, FACE);
    if (compass->has_heading) {
        snprintf(degrees, sizeof degrees, "%03d" DEGREE, (int)lround(compass->heading) % 360);
        wind = winds[(int)lround(compass->heading / 45.0) % 8];
    }
    text_centered(screen, dial.x, dial.y - dial.radius / 20, dial.radius * 0.18,
                  compass->is_on ? WHITE : GREY, degrees);
    text_centered(screen, dial.x, dial.y + dial.radius * 3 / 20, dial.radius * 0.1,
                  compass->is_on ? TEAL : GREY, compass->is_on ? wind : "off");
}

/* The pointer stands still at the top; the scale turns below it. */
static void draw_pointer(void)
{
    int half = dial.radius / 16;
    int top = dial.y - dial.radius;
    Sint16 x[3] = {(Sint16)(dial.x - half), (Sint16)(dial.x + half), (Sint16)dial.x};
    Sint16 y[3] = {(Sint16)top, (Sint16)top, (Sint16)(top + 2 * half)};

    triangle(x, y, TEAL);
}

void draw_compass(SDL_Surface *target, SDL_Rect area, const struct Compass *compass)
{
    screen = target;
    dial.x = area.x + area.w / 2;
    dial.y = area.y + area.h / 2;
    dial.radius = (area.w < area.h ? area.w : area.h) / 2 - 1;
    dial.heading = compass->heading;
    disc(1.0, BEZEL);
    disc(0.97, FACE);
    draw_scale();
    draw_rose();
    draw_heading(compass);
    draw_pointer();
}
