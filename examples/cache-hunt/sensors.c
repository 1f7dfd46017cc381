#include "hunt.h"

#define BATTERY "vire://com.vire.battery/status"
#define BATTERY_INTERVAL 60000 /* milliseconds */
#define RETRY_INTERVAL 5000

static Uint32 next_question, next_try;
static int is_tracking;

static void on_battery(TAV_ServiceParameters *parameters, void *user_data)
{
    (void)user_data;
    hunt.battery =
        TAV_ParamExists(parameters, "percent") ? TAV_GetParamInt(parameters, "percent") : -1;
    hunt.changed = 1;
}

static void start_tracking(void)
{
    is_tracking = TAV_EnableLocationTracking(SDL_TRUE) == TAV_NOERROR;
    if (!is_tracking) {
        say("No location service", 1);
    }
    next_try = SDL_GetTicks() + RETRY_INTERVAL;
}

/* After a failure, tracking must be switched off before it can be switched on again. */
static void on_location_failure(void)
{
    say("Looking for the position...", 1);
    TAV_EnableLocationTracking(SDL_FALSE);
    hunt.has_fix = is_tracking = 0;
    next_try = SDL_GetTicks() + RETRY_INTERVAL;
}

void start_sensors(void)
{
    hunt.has_compass = TAV_EnableCompass(SDL_TRUE) == TAV_NOERROR;
    start_tracking();
}

void on_user_event(const SDL_UserEvent *event)
{
    if (event->code == TAV_EVENT_COMPASS) {
        on_heading(((const TAV_CompassReading *)event->data1)->doubleValue1);
    } else if (event->code == TAV_EVENT_LOCATION) {
        on_fix(event->data1);
    } else if (event->code == TAV_EVENT_LOCATION_FAILURE) {
        on_location_failure();
    }
}

void tend_sensors(void)
{
    Uint32 now = SDL_GetTicks();

    if (!is_tracking && now >= next_try) {
        start_tracking();
    }
    if (now >= next_question) {
        TAV_ServiceCallWithCallback(BATTERY, "{}", on_battery, NULL, SDL_TRUE);
        next_question = now + BATTERY_INTERVAL;
    }
}
