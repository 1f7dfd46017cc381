#include "alarm.h"

#include <math.h>

#include "tav.h"

#define EARTH_RADIUS_M 6371000.0
#define RADIANS_PER_DEGREE (3.14159265358979323846 / 180.0)
#define VIBRATION_PERIOD_MS 200
#define VIBRATION_MS 5000

static struct {
    AlarmState state;
    double latitude;
    double longitude;
    double metres;
} alarm;

/* Along the great circle. */
static double metresToGo(const TAV_Location *from)
{
    double north = (alarm.latitude - from->latitude) * RADIANS_PER_DEGREE;
    double east = (alarm.longitude - from->longitude) * RADIANS_PER_DEGREE;
    double a = pow(sin(north / 2), 2) + cos(from->latitude * RADIANS_PER_DEGREE) *
                                            cos(alarm.latitude * RADIANS_PER_DEGREE) *
                                            pow(sin(east / 2), 2);

    return 2 * EARTH_RADIUS_M * asin(sqrt(a));
}

int alarmSet(double latitude, double longitude, double metres)
{
    alarmOff();
    if (TAV_EnableLocationTracking(SDL_TRUE) != TAV_NOERROR) {
        return -1;
    }
    alarm.latitude = latitude;
    alarm.longitude = longitude;
    alarm.metres = metres;
    alarm.state = ALARM_WAITING;
    return 0;
}

/* When the device cannot vibrate now, the next fix tries again. */
static void onFix(const TAV_Location *fix)
{
    alarm.state = ALARM_WAITING;
    if (metresToGo(fix) <= alarm.metres &&
        TAV_Vibrate(VIBRATION_PERIOD_MS, VIBRATION_MS) == TAV_NOERROR) {
        alarm.state = ALARM_RINGING;
        TAV_EnableLocationTracking(SDL_FALSE);
    }
}

/* A failure ends the tracking, so it must be started again. */
static void onLost(void)
{
    alarm.state = ALARM_LOST;
    TAV_EnableLocationTracking(SDL_FALSE);
    TAV_EnableLocationTracking(SDL_TRUE);
}

void alarmHandle(const SDL_Event *event)
{
    if (event->type != SDL_USEREVENT ||
        (alarm.state != ALARM_WAITING && alarm.state != ALARM_LOST)) {
        return;
    }
    if (event->user.code == TAV_EVENT_LOCATION) {
        onFix(event->user.data1);
    } else if (event->user.code == TAV_EVENT_LOCATION_FAILURE) {
        onLost();
    }
}

void alarmOff(void)
{
    if (alarm.state == ALARM_WAITING || alarm.state == ALARM_LOST) {
        TAV_EnableLocationTracking(SDL_FALSE);
    }
    alarm.state = ALARM_OFF;
}

AlarmState alarmState(void)
{
    return alarm.state;
}
