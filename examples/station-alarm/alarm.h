/* Wakes a traveller on the train: the device vibrates when the destination is near. */
#ifndef ALARM_H
#define ALARM_H

#include "SDL.h"

typedef enum {
    ALARM_OFF,
    ALARM_WAITING, /* the destination is not near yet */
    ALARM_LOST,    /* the device does not know where it is; the alarm keeps asking */
    ALARM_RINGING
} AlarmState;

/* Rings within that many metres of the place, given in degrees. Returns 0, or -1 when location
 * tracking cannot be started. */
int alarmSet(double latitude, double longitude, double metres);

/* To be called with every event of SDL. */
void alarmHandle(const SDL_Event *event);

void alarmOff(void);

AlarmState alarmState(void);

#endif
