/* station_alarm LATITUDE LONGITUDE METRES */
#include <stdio.h>
#include <stdlib.h>

#include "SDL.h"
#include "alarm.h"
#include "tav.h"

static const char *const descriptions[] = {"off", "waiting", "no position", "wake up!"};

int main(int argc, char *argv[])
{
    SDL_Event event;
    AlarmState shown = ALARM_OFF;

    if (argc != 4) {
        fprintf(stderr, "usage: station_alarm LATITUDE LONGITUDE METRES\n");
        return 1;
    }
    SDL_Init(SDL_INIT_VIDEO);
    TAV_Init(0);
    if (alarmSet(atof(argv[1]), atof(argv[2]), atof(argv[3])) != 0) {
        fprintf(stderr, "station_alarm: %s\n", TAV_GetError());
        TAV_Quit();
        SDL_Quit();
        return 1;
    }
    do {
        if (alarmState() != shown) {
            shown = alarmState();
            puts(descriptions[shown]);
            fflush(stdout);
        }
        if (!SDL_WaitEvent(&event)) {
            break;
        }
        alarmHandle(&event);
    } while (event.type != SDL_QUIT);
    alarmOff();
    TAV_Quit();
    SDL_Quit();
    return 0;
}
