#include <math.h>

#include "SDL_gfxPrimitives.h"
#include "hunt.h"
#include "picture.h"

#define RANGE 160.0    /* metres from the middle to the edge */
#define EDGE 0.9       /* of the disc, as a fraction of the radius; the heat ring is around it */
#define FAR_AWAY 240.0 /* metres at which the heat ring begins to fill */
#define SEGMENTS 48    /* of the ring */

static struct {
    int x, y, radius;
} disc;

/* A bearing in degrees, and a distance as a fraction of the radius. */
typedef double Corner[2];

static void locate(double bearing, double distance, Sint16 *x, Sint16 *y)
{
    double angle = (bearing - hunt.heading) * M_PI / 180.0;

    *x = (Sint16)lround(disc.x + sin(angle) * distance * disc.radius);
    *y = (Sint16)lround(disc.y - cos(angle) * distance * disc.radius);
}

static void polygon(const Corner *corners, int count, double bearing, Uint32 color)
{
    Sint16 x[4], y[4];
    int i;

    for (i = 0; i < count; ++i) {
        locate(bearing + corners[i][0], corners[i][1], &x[i], &y[i]);
    }
    filledPolygonColor(canvas, x, y, count, color);
    aapolygonColor(canvas, x, y, count, color);
}

double heat(void)
{
    if (hunt.found == CACHE_COUNT) {
        return 0.999;
    }
    return hunt.has_fix && hunt.distance < FAR_AWAY ? 0.999 - hunt.distance / FAR_AWAY : 0;
}

Uint32 heat_color(double part)
{
    static const Uint32 colors[] = {BLUE, MINT, AMBER, RED};
    return hunt.found == CACHE_COUNT ? MINT : colors[(int)(part * 4)];
}

/* The ring does not turn with the heading. It fills clockwise from the top. */
static void draw_heat(void)
{
    static const Corner segment[] = {{-2.6, 0.94}, {2.6, 0.94}, {2.6, 1.0}, {-2.6, 1.0}};
    int i;

    for (i = 0; i < SEGMENTS; ++i) {
        double part = (double)i / SEGMENTS;
        polygon(segment, 4, hunt.heading + (i + 0.5) * 360.0 / SEGMENTS,
                part < heat() ? heat_color(part) : PANEL);
    }
}

static void draw_face(void)
{
    static const char *const winds[] = {"N", "E", "S", "W"};
    Sint16 x, y;
    int i;

    filledCircleColor(canvas, (Sint16)disc.x, (Sint16)disc.y, (Sint16)(disc.radius * EDGE), PANEL);
    for (i = 1; i <= 4; ++i) {
        aacircleColor(canvas, (Sint16)disc.x, (Sint16)disc.y, (Sint16)(disc.radius * EDGE * i / 4),
                      LINE);
    }
    for (i = 0; i < 4; ++i) {
        locate(90 * i, 0.8, &x, &y);
        write_centered(x, y, i == 0 ? RED : GREY, winds[i]);
    }
}

static void mark(struct Place place, int radius, Uint32 color)
{
    double distance = distance_of(place) / RANGE * EDGE;
    Sint16 x, y;

    if (distance < EDGE - 0.04) {
        locate(bearing_of(place), distance, &x, &y);
        filledCircleColor(canvas, x, y, (Sint16)radius, color);
    }
}

static void draw_places(void)
{
    int i;

    for (i = 0; i < hunt.trail_length; ++i) {
        mark(hunt.trail[i], 1, MINT);
    }
    for (i = 0; i < hunt.found; ++i) {
        mark(caches[i].place, 4, AMBER);
    }
}

static void draw_hint(void)
{
    static const Corner arrow[] = {{0, 0.72}, {-9, 0.54}, {9, 0.54}};

    if (hunt.has_hint && hunt.has_fix) {
        polygon(arrow, 3, bearing_of(caches[hunt.found].place), AMBER);
    }
}

static void draw_player(void)
{
    static const Corner left[] = {{0, 0.11}, {180, 0.03}, {215, 0.09}};
    static const Corner right[] = {{0, 0.11}, {180, 0.03}, {145, 0.09}};

    polygon(left, 3, hunt.heading, hunt.has_fix ? WHITE : GREY);
    polygon(right, 3, hunt.heading, hunt.has_fix ? GREY : LINE);
}

void draw_radar(SDL_Rect area)
{
    disc.x = area.x + area.w / 2;
    disc.y = area.y + area.h / 2;
    disc.radius = (area.w < area.h ? area.w : area.h) / 2 - 1;
    draw_face();
    draw_heat();
    draw_places();
    draw_hint();
    draw_player();
}
