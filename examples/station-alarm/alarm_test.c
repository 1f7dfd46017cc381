/* Tests of the alarm on a simulated device, in virtual time. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "SDL.h"
#include "alarm.h"
#include "tav.h"
#include "tavsim.h"

#define FAR "location 52.4000 13.0667 34 8 12 90 40"
#define NEAR "location 52.5251 13.3690 34 8 12 90 20"

#define TRACKING "what=subscribe uri=vire://com.vire.location/startTracking"

static int failures = 0;

static void showDevice(void)
{
    int line;

    fprintf(stderr, "  last failure of the device: %s\n", TAVSim_GetError());
    for (line = 0; line < TAVSim_JournalLength(); ++line) {
        fprintf(stderr, "  %s\n", TAVSim_JournalLine(line));
    }
}

#define CHECK(condition)                                                        \
    do {                                                                        \
        if (!(condition)) {                                                     \
            fprintf(stderr, "%s:%d: not %s\n", __FILE__, __LINE__, #condition); \
            showDevice();                                                       \
            ++failures;                                                         \
        }                                                                       \
    } while (0)

/* Gives the device a position by the command, and lets the application handle the event. */
static void be(const char *command)
{
    SDL_Event event;

    TAVSim_Command(command);
    TAVSim_Advance(1000);
    while (SDL_PollEvent(&event)) {
        alarmHandle(&event);
    }
}

static void startDevice(void)
{
    if (TAVSim_Start("{\"title\": \"a device that knows what it is told\"}", NULL) != 0) {
        fprintf(stderr, "%s\n", TAVSim_GetError());
        exit(1);
    }
}

static void stopDevice(void)
{
    alarmOff();
    TAV_Quit();
    TAVSim_Stop();
}

static int vibratorIs(const char *expected)
{
    const char *state = TAVSim_State("vibrator");

    return state != NULL && strcmp(state, expected) == 0;
}

static int setForCentralStation(void)
{
    return alarmSet(52.5251, 13.3694, 1000);
}

static void ringsWhenNear(void)
{
    CHECK(setForCentralStation() == 0);
    be(FAR);
    CHECK(alarmState() == ALARM_WAITING);
    CHECK(TAVSim_State("vibrator") == NULL);
    be(NEAR);
    CHECK(alarmState() == ALARM_RINGING);
    CHECK(vibratorIs("on, period 200 ms"));
    TAVSim_Advance(5000);
    CHECK(vibratorIs("off"));
}

static void goesOnWithoutPosition(void)
{
    int first;

    CHECK(setForCentralStation() == 0);
    first = TAVSim_FindEntry(TRACKING, 0);
    CHECK(first >= 0);
    be("location error 5");
    CHECK(alarmState() == ALARM_LOST);
    CHECK(TAVSim_FindEntry(TRACKING, first + 1) > first);
    be(NEAR);
    CHECK(alarmState() == ALARM_RINGING);
}

static void cannotBeSetWithoutBus(void)
{
    TAVSim_FailFrom(TAVSIM_DISPATCH, 1);
    CHECK(setForCentralStation() == -1);
    CHECK(setForCentralStation() == -1);
    CHECK(alarmState() == ALARM_OFF);
}

/* Whichever request is refused, the alarm rings as soon as the bus takes requests again. */
static void survivesEachRefusal(void)
{
    int refused = 0;

    do {
        startDevice();
        TAVSim_FailNth(TAVSIM_DISPATCH, ++refused);
        if (setForCentralStation() != 0) {
            CHECK(setForCentralStation() == 0);
        }
        be(NEAR);
        be(NEAR);
        CHECK(alarmState() == ALARM_RINGING);
        alarmOff();
        TAV_Quit();
    } while (failures == 0 && TAVSim_Occurrences(TAVSIM_DISPATCH) >= refused);
    CHECK(refused == 3);
}

int main(int argc, char *argv[])
{
    void (*const tests[])(void) = {ringsWhenNear, goesOnWithoutPosition, cannotBeSetWithoutBus,
                                   survivesEachRefusal};
    size_t index;

    (void)argc;
    (void)argv;
    SDL_putenv("SDL_VIDEODRIVER=dummy");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "%s\n", SDL_GetError());
        return 1;
    }
    for (index = 0; index < sizeof tests / sizeof tests[0]; ++index) {
        startDevice();
        tests[index]();
        stopDevice();
    }
    SDL_Quit();
    printf("%d failures\n", failures);
    return failures != 0;
}
