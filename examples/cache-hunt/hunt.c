#include "hunt.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#define RADIANS (M_PI / 180.0)
#define METERS_PER_DEGREE 111195.0
#define CLOSE_ENOUGH 12.0 /* metres at which a cache is found */
#define STRIDE 8.0        /* metres between two marks of the trail */

const struct Cache caches[CACHE_COUNT] = {
    {"old oak", {52.515180, 13.350000}},
    {"bridge", {52.515180, 13.353000}},
    {"boat house", {52.514000, 13.354500}},
};

struct Hunt hunt = {.battery = -1, .running = 1};

/* Within a park, the earth is flat enough. */
static double meters_north(struct Place place)
{
    return (place.latitude - hunt.here.latitude) * METERS_PER_DEGREE;
}

static double meters_east(struct Place place)
{
    return (place.longitude - hunt.here.longitude) * METERS_PER_DEGREE *
           cos(hunt.here.latitude * RADIANS);
}

double distance_of(struct Place place)
{
    return hypot(meters_north(place), meters_east(place));
}

double bearing_of(struct Place place)
{
    return atan2(meters_east(place), meters_north(place)) / RADIANS;
}

void say(const char *message, int is_bad)
{
    snprintf(hunt.message, sizeof hunt.message, "%s", message);
    hunt.is_bad = is_bad;
    hunt.changed = 1;
}

void start_hunt(void)
{
    hunt.found = hunt.has_hint = hunt.is_offered = hunt.trail_length = 0;
    hunt.has_fix = 0;
    hunt.started = SDL_GetTicks();
    say("Three caches are hidden here", 0);
}

Uint32 time_taken(void)
{
    return (hunt.found == CACHE_COUNT ? hunt.ended : SDL_GetTicks()) - hunt.started;
}

static void leave_trail(void)
{
    if (hunt.trail_length > 0 && distance_of(hunt.trail[0]) < STRIDE) {
        return;
    }
    memmove(&hunt.trail[1], &hunt.trail[0], sizeof hunt.trail - sizeof hunt.trail[0]);
    hunt.trail[0] = hunt.here;
    hunt.trail_length += hunt.trail_length < TRAIL_LENGTH;
}

static void find(const char *name)
{
    char message[40];

    hunt.ended = SDL_GetTicks();
    ++hunt.found;
    hunt.has_hint = hunt.is_offered = 0;
    snprintf(message, sizeof message, "You found the %s!", name);
    say(message, 0);
    printf("%u s: found the %s\n", (unsigned)(time_taken() / 1000), name);
    TAV_Vibrate(100, 400);
    tell_page(name);
}

void on_fix(const TAV_Location *fix)
{
    const struct Cache *cache = &caches[hunt.found];
    double before = hunt.distance;

    hunt.here.latitude = fix->latitude;
    hunt.here.longitude = fix->longitude;
    hunt.changed = 1;
    leave_trail();
    if (!hunt.has_compass) {
        on_heading(fix->heading);
    }
    if (hunt.found < CACHE_COUNT) {
        hunt.distance = distance_of(cache->place);
        hunt.approach = hunt.has_fix ? before - hunt.distance : 0;
        if (hunt.distance <= CLOSE_ENOUGH) {
            find(cache->name);
        }
    }
    hunt.has_fix = 1;
}

void on_heading(double degrees)
{
    hunt.changed = hunt.changed || lround(degrees) != lround(hunt.heading);
    hunt.heading = degrees;
}
