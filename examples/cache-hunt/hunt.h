/* The game: what is hidden, what is found, and what the device has reported so far. */
#ifndef CACHE_HUNT_HUNT_H
#define CACHE_HUNT_HUNT_H

#include "SDL.h"
#include "tav.h"

#define CACHE_COUNT 3
#define TRAIL_LENGTH 64

struct Place {
    double latitude, longitude; /* degrees */
};

struct Cache {
    const char *name;
    struct Place place;
};

struct Hunt {
    int found;         /* number of caches found; the next one is looked for */
    int has_fix;       /* the position is known at this moment */
    struct Place here; /* the last one that was known */
    double distance;   /* metres to the cache that is looked for */
    double approach;   /* metres by which the last fix came nearer */
    double heading;    /* where the device points, in degrees */
    int has_compass;   /* without one the heading is where the player walks */
    int has_hint;      /* the direction of the cache is bought */
    int is_offered;    /* a hint is offered, and can be bought */
    int battery;       /* percent; -1 when it is not known */
    Uint32 started, ended;
    struct Place trail[TRAIL_LENGTH]; /* where the player was, the latest first */
    int trail_length;
    char message[40];
    int is_bad; /* the message is about a failure */
    int running;
    int changed; /* since the picture was drawn */
};

/* hunt.c: the rules */

extern const struct Cache caches[CACHE_COUNT]; /* in the order in which they are looked for */
extern struct Hunt hunt;

/* Hides all caches again. */
void start_hunt(void);
void on_fix(const TAV_Location *fix);
void on_heading(double degrees);
void say(const char *message, int is_bad);

/* Milliseconds since the start, or until the last cache was found. */
Uint32 time_taken(void);

/* How far, in metres, and in which direction, in degrees, a place is from here. */
double distance_of(struct Place place);
double bearing_of(struct Place place);

/* sensors.c: position, compass and battery */

void start_sensors(void);

/* A reading, a fix or a failure has come. */
void on_user_event(const SDL_UserEvent *event);

/* Retries to get a lost position, and reads the battery's charge now and then. */
void tend_sensors(void);

/* shop.c: hints are for sale */

/* The first time a hint is offered, with its price; the next time it is bought. The payment service
 * is waited for either way. */
void want_hint(void);

/* page.c: the game as a plug-in of a web page */

/* Offers the page the methods "progress" and "cache". */
void connect_page(void);

/* Calls the page's function "found" with a cache's name and how many are found now. */
void tell_page(const char *cache);

#endif
