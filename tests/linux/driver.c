/* Does what its arguments say through libtav, one after the other, and prints what comes of it:
 *
 *     call URI PAYLOAD         one call, and its reply
 *     send URI PAYLOAD         a call whose reply nobody wants
 *     subscribe URI PAYLOAD N  N replies, then an end to it
 *     abandon URI PAYLOAD      a subscription that is cancelled at once
 *     cancel URI PAYLOAD FILE  a call that is cancelled once the file is there
 *     repeat N URI PAYLOAD     N calls in a row; growth of memory in kB after the first tenth
 *     location N | compass N   N fixes or failures, N readings
 *     wait FILE                until the file is there, with events handled
 *     browse URL | mail SUBJECT BODY TO | vibrate PERIOD DURATION | port NUMBER FLAG | pause
 *     keyboard FLAG | timeout FLAG | banners FLAG | refusals | about | purchase
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "SDL.h"
#include "tav.h"

#define LONGEST_WAIT_MS 20000

static int replies;
static int repliesWanted; /* after which a subscription ends, within its reply function */
static int quiet;

static void onReply(TAV_ServiceParameters *reply, void *userData)
{
    (void)userData;
    ++replies;
    if (!quiet) {
        printf("reply %s\n", TAV_GetParamJson(reply));
        fflush(stdout);
    }
    if (replies == repliesWanted) {
        TAV_UnregisterServiceCallback(onReply);
    }
}

static void onEvent(const SDL_Event *event)
{
    const TAV_Location *fix = event->user.data1;
    const TAV_CompassReading *reading = event->user.data1;

    if (event->type != SDL_USEREVENT) {
        return;
    }
    ++replies;
    switch (event->user.code) {
    case TAV_EVENT_LOCATION:
        printf("fix %.4f %.4f %.1f %.1f %.1f %.1f %.1f\n", fix->latitude, fix->longitude,
               fix->altitude, fix->horizAccuracy, fix->vertAccuracy, fix->heading, fix->velocity);
        break;
    case TAV_EVENT_LOCATION_FAILURE:
        printf("location failure %d\n", *(const int *)event->user.data1);
        break;
    case TAV_EVENT_COMPASS:
        printf("compass %d %.1f %.1f\n", reading->intValue, reading->doubleValue1,
               reading->doubleValue2);
        break;
    }
    fflush(stdout);
}

static void handleEvents(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        onEvent(&event);
    }
}

/* Handles events until so many replies, fixes or readings have come. */
static void waitFor(int count)
{
    const Uint32 start = SDL_GetTicks();

    while (replies < count) {
        handleEvents();
        if (replies < count) {
            if (SDL_GetTicks() - start > LONGEST_WAIT_MS) {
                printf("nothing came\n");
                exit(1);
            }
            SDL_Delay(quiet ? 0 : 1);
        }
    }
    replies = 0;
}

static void outcome(const char *what, int code)
{
    printf("%s %d%s%s\n", what, code, code != TAV_NOERROR ? " " : "",
           code != TAV_NOERROR ? TAV_GetError() : "");
    fflush(stdout);
}

static int call(const char *uri, const char *payload, SDL_bool once)
{
    const int code = TAV_ServiceCallWithCallback(uri, payload, onReply, NULL, once);

    if (code != TAV_NOERROR) {
        outcome("call", code);
    }
    return code == TAV_NOERROR;
}

static long memoryInKilobytes(void)
{
    long size = 0;
    long resident = 0;
    FILE *file = fopen("/proc/self/statm", "r");

    if (file == NULL || fscanf(file, "%ld %ld", &size, &resident) != 2) {
        exit(1);
    }
    fclose(file);
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

static void repeat(int count, const char *uri, const char *payload)
{
    long before = 0;
    int i;

    quiet = 1;
    for (i = 0; i < count; ++i) {
        if (i == count / 10) {
            before = memoryInKilobytes();
        }
        if (!call(uri, payload, SDL_TRUE)) {
            return;
        }
        waitFor(1);
    }
    quiet = 0;
    printf("grown %ld\n", memoryInKilobytes() - before);
}

static void waitForFile(const char *path)
{
    const Uint32 start = SDL_GetTicks();

    while (access(path, F_OK) != 0 && SDL_GetTicks() - start < LONGEST_WAIT_MS) {
        handleEvents();
        SDL_Delay(1);
    }
    handleEvents();
}

static void refusals(void)
{
    outcome("orientation", TAV_SetOrientation(TAV_ORIENTATION_LEFT));
    outcome("gestures", TAV_GesturesEnable(SDL_TRUE));
    outcome("pause UI", TAV_CustomPauseUiEnable(SDL_TRUE));
    outcome("touch", TAV_SetTouchAggression(1));
    outcome("JavaScript", TAV_JSRegistrationComplete());
    printf("plugin %d\n", TAV_IsPlugin());
}

static void about(void)
{
    static int (*const queries[])(char *, int) = {TAV_GetDeviceName, TAV_GetRegionCountryCode,
                                                  TAV_GetRegionCountryName, TAV_GetLanguage,
                                                  TAV_GetUniqueID};
    char text[1024];
    TAV_OSVersion version;
    size_t i;

    for (i = 0; i < sizeof queries / sizeof *queries; ++i) {
        const int code = queries[i](text, sizeof text);
        printf("%s\n", code == TAV_NOERROR ? text : "-");
    }
    printf("%d\n", TAV_GetOSVersion(&version) == TAV_NOERROR ? version.major : -1);
    printf("%d\n", TAV_GetHardwareID());
    outcome("title", TAV_GetAppinfoValue("title", text, sizeof text));
    printf("%s\n", text);
    outcome("no value", TAV_GetAppinfoValue("nothing", text, sizeof text));
    TAV_GetDataFilePath("level", text, sizeof text);
    printf("%s\n", text);
    TAV_GetDataFilePath("appinfo.json", text, sizeof text);
    printf("%s\n", text);
}

static void purchase(void)
{
    TAV_ItemInfo *item = TAV_GetItemInfo("extra");

    printf("item %s\n", item != NULL ? TAV_GetItemJSON(item) : TAV_GetError());
}

/* Does the command at the arguments and says how many of them it took. */
static int perform(char *a[])
{
    const char *recipient;

    if (strcmp(a[0], "call") == 0) {
        if (call(a[1], a[2], SDL_TRUE)) {
            waitFor(1);
        }
        return 3;
    }
    if (strcmp(a[0], "send") == 0) {
        outcome("send", TAV_ServiceCall(a[1], a[2]));
        return 3;
    }
    if (strcmp(a[0], "subscribe") == 0) {
        repliesWanted = atoi(a[3]);
        if (call(a[1], a[2], SDL_FALSE)) {
            waitFor(repliesWanted);
        }
        repliesWanted = 0;
        return 4;
    }
    if (strcmp(a[0], "abandon") == 0) {
        call(a[1], a[2], SDL_FALSE);
        TAV_UnregisterServiceCallback(onReply);
        return 3;
    }
    if (strcmp(a[0], "cancel") == 0) {
        call(a[1], a[2], SDL_TRUE);
        waitForFile(a[3]);
        TAV_UnregisterServiceCallback(onReply);
        return 4;
    }
    if (strcmp(a[0], "repeat") == 0) {
        repeat(atoi(a[1]), a[2], a[3]);
        return 4;
    }
    if (strcmp(a[0], "location") == 0) {
        outcome("tracking", TAV_EnableLocationTracking(SDL_TRUE));
        waitFor(atoi(a[1]));
        TAV_EnableLocationTracking(SDL_FALSE);
        return 2;
    }
    if (strcmp(a[0], "compass") == 0) {
        SDL_ClearError();
        outcome("enabled", TAV_EnableCompass(SDL_TRUE));
        waitFor(atoi(a[1]));
        TAV_EnableCompass(SDL_FALSE);
        return 2;
    }
    if (strcmp(a[0], "wait") == 0) {
        waitForFile(a[1]);
        return 2;
    }
    if (strcmp(a[0], "browse") == 0) {
        outcome("browse", TAV_LaunchBrowser(a[1]));
        return 2;
    }
    if (strcmp(a[0], "mail") == 0) {
        recipient = a[3];
        outcome("mail", TAV_LaunchEmailTo(a[1], a[2], 1, &recipient));
        return 4;
    }
    if (strcmp(a[0], "vibrate") == 0) {
        outcome("vibrate", TAV_Vibrate(atoi(a[1]), atoi(a[2])));
        return 3;
    }
    if (strcmp(a[0], "port") == 0) {
        outcome("port", TAV_SetFirewallPortStatus(atoi(a[1]), atoi(a[2])));
        return 3;
    }
    if (strcmp(a[0], "keyboard") == 0) {
        outcome("keyboard", TAV_SetKeyboardState(atoi(a[1])));
        return 2;
    }
    if (strcmp(a[0], "timeout") == 0) {
        outcome("timeout", TAV_ScreenTimeoutEnable(atoi(a[1])));
        return 2;
    }
    if (strcmp(a[0], "banners") == 0) {
        outcome("banners", TAV_BannerMessagesEnable(atoi(a[1])));
        return 2;
    }
    if (strcmp(a[0], "pause") == 0) {
        outcome("pause", TAV_NotifyMusicPlaying(SDL_TRUE));
    } else if (strcmp(a[0], "refusals") == 0) {
        refusals();
    } else if (strcmp(a[0], "about") == 0) {
        about();
    } else if (strcmp(a[0], "purchase") == 0) {
        purchase();
    } else {
        exit(2);
    }
    return 1;
}

int main(int argc, char *argv[])
{
    int at = 1;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    while (at < argc) {
        at += perform(argv + at);
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
