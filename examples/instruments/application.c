#include "application.h"

#include <math.h>
#include <stdio.h>

struct Application app;

/* Shows the result of an action: what was done, or the error message. */
static void report(const char *action, const char *done, int code)
{
    const char *why = TAV_GetError();

    app.failed = code != TAV_NOERROR;
    snprintf(app.message, sizeof app.message, "%s: %s", action,
             !app.failed    ? done
             : *why != '\0' ? why
                            : "refused");
    app.changed = 1;
}

static void toggle_compass(void)
{
    int code;

    SDL_ClearError(); /* a refused compass sets no message */
    code = TAV_EnableCompass(app.compass.is_on ? SDL_FALSE : SDL_TRUE);
    if (code == TAV_NOERROR) {
        app.compass.is_on = !app.compass.is_on;
    }
    report("compass", app.compass.is_on ? "on" : "off", code);
}

static void toggle_location(void)
{
    int code = TAV_EnableLocationTracking(app.location_on ? SDL_FALSE : SDL_TRUE);

    if (code == TAV_NOERROR) {
        app.location_on = !app.location_on;
    }
    report("location", app.location_on ? "on" : "off", code);
}

static void vibrate(void)
{
    report("vibrate", "half a second", TAV_Vibrate(100, 500));
}

static void toggle_keyboard(void)
{
    int code = TAV_SetKeyboardState(app.keyboard_on ? SDL_FALSE : SDL_TRUE);

    if (code == TAV_NOERROR) {
        app.keyboard_on = !app.keyboard_on;
    }
    report("keyboard", app.keyboard_on ? "shown" : "hidden", code);
}

static void turn_screen(void)
{
    static const char *const names[] = {"bottom", "right", "top", "left"};
    int next = (app.orientation + 1) % 4;
    int code = TAV_SetOrientation((TAV_Orientation)next);

    if (code == TAV_NOERROR) {
        app.orientation = next;
    }
    report("screen", names[app.orientation], code);
}

static void on_battery(TAV_ServiceParameters *parameters, void *user_data)
{
    const char *json = TAV_GetParamJson(parameters);

    (void)user_data;
    snprintf(app.reply, sizeof app.reply, "%s", json != NULL ? json : "(no text)");
    app.changed = 1;
}

static void ask_battery(void)
{
    report("battery", "asked",
           TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}", on_battery, NULL,
                                       SDL_TRUE));
}

static void minimize(void)
{
    report("window", "minimized", TAV_Minimize());
}

static void quit(void)
{
    app.running = 0;
}

const struct Action actions[KEY_COUNT] = {
    {SDLK_c, "C", "compass", toggle_compass, &app.compass.is_on},
    {SDLK_l, "L", "location", toggle_location, &app.location_on},
    {SDLK_b, "B", "battery", ask_battery, NULL},
    {SDLK_v, "V", "vibrate", vibrate, NULL},
    {SDLK_k, "K", "keyboard", toggle_keyboard, &app.keyboard_on},
    {SDLK_o, "O", "turn", turn_screen, NULL},
    {SDLK_m, "M", "minimize", minimize, NULL},
    {SDLK_q, "Q", "quit", quit, NULL},
};

static void look_around(void)
{
    if (TAV_GetDeviceName(app.name, sizeof app.name) != TAV_NOERROR) {
        snprintf(app.name, sizeof app.name, "No name");
    }
    if (TAV_GetLanguage(app.language, sizeof app.language) != TAV_NOERROR) {
        snprintf(app.language, sizeof app.language, "no language");
    }
}

void start_application(void)
{
    look_around();
    toggle_compass();
    toggle_location();
    ask_battery();
}

/* After a failure, tracking must be switched off before it can be switched on again. */
static void on_location_failure(void)
{
    TAV_Location none;

    report("location", "", TAV_GetLocation(&none));
    TAV_EnableLocationTracking(SDL_FALSE);
    app.location_on = 0;
}

void on_user_event(const SDL_UserEvent *event)
{
    switch (event->code) {
    case TAV_EVENT_COMPASS:
        app.compass.heading = fmod(((const TAV_CompassReading *)event->data1)->doubleValue1, 360.0);
        app.compass.heading += app.compass.heading < 0 ? 360.0 : 0.0;
        app.compass.has_heading = 1;
        break;
    case TAV_EVENT_LOCATION:
        app.fix = *(const TAV_Location *)event->data1;
        app.has_fix = 1;
        break;
    case TAV_EVENT_LOCATION_FAILURE:
        on_location_failure();
        break;
    default:
        break;
    }
    app.changed = 1;
}
