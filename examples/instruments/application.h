/* What the application knows of the device and asks of it. */
#ifndef INSTRUMENTS_APPLICATION_H
#define INSTRUMENTS_APPLICATION_H

#include "SDL.h"
#include "layout.h"
#include "rose.h"
#include "tav.h"

struct Application {
    char name[64], language[64];
    struct Compass compass;
    int location_on, keyboard_on, orientation;
    int has_fix;
    TAV_Location fix;
    char reply[512];
    char message[192]; /* the result of the last action */
    int failed;
    int running;
    int changed; /* since the last drawing */
};

extern struct Application app;

/* What keys and touches do. */
struct Action {
    SDLKey key;
    const char *letter, *label;
    void (*act)(void);
    const int *is_on; /* null for an action that is no switch */
};

extern const struct Action actions[KEY_COUNT];

/* Reads what does not change, switches the sensors on and asks for the battery's status. */
void start_application(void);

/* A reading, a fix or a failure has come. */
void on_user_event(const SDL_UserEvent *event);

#endif
