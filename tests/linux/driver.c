/* Carries out the commands in its arguments through libtav and prints their results:
 *
 *     call URI PAYLOAD         one call, and its reply
 *     send URI PAYLOAD         a call whose reply nobody wants
 *     subscribe URI PAYLOAD N  a subscription that ends after N replies
 *     abandon URI PAYLOAD      a subscription that is cancelled at once
 *     cancel URI PAYLOAD FILE  a call that is cancelled once the file exists
 *     repeat N URI PAYLOAD     N calls in a row; growth of memory in kB after the first tenth
 *     thread URI PAYLOAD       a call on a thread, which opens the first file, and then one here
 *     fork URI PAYLOAD         a call, and another in a child process
 *     location N | compass N   N fixes or failures, N readings
 *     wait FILE                handle events until the file exists
 *     browse URL | mail SUBJECT BODY TO | vibrate PERIOD DURATION | port NUMBER FLAG | pause
 *     plugin                   as a page's plug-in, until the page has called "end" and has gone
 *     keyboard FLAG | timeout FLAG | banners FLAG | refusals | about | minimize
 */
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SDL.h"
#include "tav.h"

#define LONGEST_WAIT_MS 20000

static int replies;
static int repliesWanted; /* a reply function then ends its own subscription */
static int quiet;

static void onReply(TAV_ServiceParameters *reply, void *userData)
{
    (void)userData;
    ++replies;
    if (!quiet) {
        printf("reply %s\n", TAV_GetParamJson(reply));
    }
    if (replies == repliesWanted) {
        TAV_UnregisterServiceCallback(onReply);
    }
}

static void handleEvents(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        const TAV_Location *fix = event.user.data1;
        const TAV_CompassReading *reading = event.user.data1;

        if (event.type != SDL_USEREVENT) {
            continue;
        }
        ++replies;
        switch (event.user.code) {
        case TAV_EVENT_LOCATION:
            printf("fix %.4f %.4f %.1f %.1f %.1f %.1f %.1f\n", fix->latitude, fix->longitude,
                   fix->altitude, fix->horizAccuracy, fix->vertAccuracy, fix->heading,
                   fix->velocity);
            break;
        case TAV_EVENT_LOCATION_FAILURE:
            printf("location failure %d\n", *(const int *)event.user.data1);
            break;
        case TAV_EVENT_COMPASS:
            printf("compass %d %.1f %.1f\n", reading->intValue, reading->doubleValue1,
                   reading->doubleValue2);
        }
    }
}

/* Handles events until that many replies, fixes or readings have come. */
static void waitFor(int count)
{
    const Uint32 start = SDL_GetTicks();

    for (handleEvents(); replies < count; handleEvents()) {
        if (SDL_GetTicks() - start > LONGEST_WAIT_MS) {
            printf("nothing came\n");
            exit(1);
        }
        SDL_Delay(quiet ? 0 : 1);
    }
    replies = 0;
}

static void outcome(const char *what, int code)
{
    printf(code != TAV_NOERROR ? "%s %d %s\n" : "%s %d\n", what, code, TAV_GetError());
}

static int call(const char *uri, const char *payload, SDL_bool once)
{
    const int code = TAV_ServiceCallWithCallback(uri, payload, onReply, NULL, once);

    if (code != TAV_NOERROR) {
        outcome("call", code);
    }
    return code == TAV_NOERROR;
}

static void repeat(char *a[])
{
    const int count = atoi(a[0]);
    size_t before = 0;
    int i;

    quiet = 1;
    for (i = 0; i < count; ++i) {
        if (i == count / 10) {
            before = mallinfo2().uordblks;
        }
        if (!call(a[1], a[2], SDL_TRUE)) {
            return;
        }
        waitFor(1);
    }
    quiet = 0;
    printf("grown %ld\n", ((long)mallinfo2().uordblks - (long)before) / 1024);
}

static void waitForFile(char *a[])
{
    const Uint32 start = SDL_GetTicks();

    while (access(a[0], F_OK) != 0 && SDL_GetTicks() - start < LONGEST_WAIT_MS) {
        handleEvents();
        SDL_Delay(1);
    }
    handleEvents();
}

static void refusals(char *a[])
{
    (void)a;
    outcome("orientation", TAV_SetOrientation(TAV_ORIENTATION_LEFT));
    outcome("gestures", TAV_GesturesEnable(SDL_TRUE));
    outcome("pause UI", TAV_CustomPauseUiEnable(SDL_TRUE));
    outcome("touch", TAV_SetTouchAggression(1));
    outcome("JavaScript", TAV_JSRegistrationComplete());
    outcome("item", TAV_GetItemInfo("extra") == NULL);
    printf("plugin %d\n", TAV_IsPlugin());
}

static void about(char *a[])
{
    char text[1024];
    TAV_OSVersion version;

    (void)a;
    printf("%s\n", TAV_GetDeviceName(text, sizeof text) == TAV_NOERROR ? text : "-");
    printf("%s\n", TAV_GetRegionCountryCode(text, sizeof text) == TAV_NOERROR ? text : "-");
    printf("%s\n", TAV_GetRegionCountryName(text, sizeof text) == TAV_NOERROR ? text : "-");
    printf("%s\n", TAV_GetLanguage(text, sizeof text) == TAV_NOERROR ? text : "-");
    printf("%s\n", TAV_GetUniqueID(text, sizeof text) == TAV_NOERROR ? text : "-");
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

static void callOnce(char *a[])
{
    if (call(a[0], a[1], SDL_TRUE)) {
        waitFor(1);
    }
}

static int callElsewhere(void *a)
{
    char **arguments = a;

    if (access("/proc/nduid", F_OK) == 0) {
        call(arguments[0], arguments[1], SDL_TRUE);
    }
    return 0;
}

static void callInFork(char *a[])
{
    callOnce(a);
    if (fork() == 0) {
        _exit(callElsewhere(a));
    }
    wait(NULL);
}

static void subscribe(char *a[])
{
    repliesWanted = atoi(a[2]);
    if (call(a[0], a[1], SDL_FALSE)) {
        waitFor(repliesWanted);
    }
    repliesWanted = 0;
}

static void abandon(char *a[])
{
    call(a[0], a[1], SDL_FALSE);
    TAV_UnregisterServiceCallback(onReply);
}

static void cancel(char *a[])
{
    call(a[0], a[1], SDL_TRUE);
    waitForFile(a + 2);
    TAV_UnregisterServiceCallback(onReply);
}

/* The number of its arguments, and the first one. */
static void echo(TAV_JSParameters *parameters)
{
    char text[256];

    snprintf(text, sizeof text, "%d %s", TAV_GetNumJSParams(parameters),
             TAV_GetJSParamString(parameters, 0));
    TAV_JSReply(parameters, text);
    ++replies;
}

/* Calls the page with its argument, and waits until the page calls back. */
static void ask(TAV_JSParameters *parameters)
{
    const char *arguments[] = {TAV_GetJSParamString(parameters, 0), NULL};

    outcome("asked", TAV_CallJS("asked", arguments, 2));
    waitFor(1);
    TAV_JSReply(parameters, "told");
}

static void end(TAV_JSParameters *parameters)
{
    SDL_Event event = {SDL_USEREVENT};

    (void)parameters;
    SDL_PushEvent(&event);
}

static int useElsewhere(void *where)
{
    outcome(where, TAV_JSRegistrationComplete());
    outcome(where, TAV_CallJS("elsewhere", NULL, 0));
    return 0;
}

static void plugin(char *a[])
{
    (void)a;
    TAV_RegisterJSHandler("echo", echo);
    TAV_RegisterJSHandler("ask", ask);
    TAV_RegisterJSHandler("end", end);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        outcome("plugin", TAV_IsPlugin());
        return;
    }
    outcome("again", TAV_JSRegistrationComplete());
    SDL_WaitThread(SDL_CreateThread(useElsewhere, "thread"), NULL);
    if (fork() == 0) {
        _exit(useElsewhere("fork"));
    }
    wait(NULL);
    SDL_WaitEvent(NULL);
    while (TAV_CallJS("there", NULL, 0) == TAV_NOERROR) {
        handleEvents();
    }
    outcome("gone", TAV_CallJS("there", NULL, 0));
}

static void location(char *a[])
{
    outcome("tracking", TAV_EnableLocationTracking(SDL_TRUE));
    waitFor(atoi(a[0]));
    TAV_EnableLocationTracking(SDL_FALSE);
}

static void compass(char *a[])
{
    SDL_ClearError();
    outcome("enabled", TAV_EnableCompass(SDL_TRUE));
    waitFor(atoi(a[0]));
    TAV_EnableCompass(SDL_FALSE);
}

static const struct {
    const char *name;
    int arguments;
    void (*perform)(char *a[]);
} commands[] = {{"call", 2, callOnce},   {"subscribe", 3, subscribe}, {"abandon", 2, abandon},
                {"cancel", 3, cancel},   {"repeat", 3, repeat},       {"location", 1, location},
                {"compass", 1, compass}, {"wait", 1, waitForFile},    {"refusals", 0, refusals},
                {"about", 0, about},     {"plugin", 0, plugin},       {"thread", 2, callOnce},
                {"fork", 2, callInFork}};

#define TAKE(NAME, ARGUMENTS, CALL) \
    if (strcmp(a[0], NAME) == 0) {  \
        outcome(NAME, CALL);        \
        return ARGUMENTS;           \
    }

/* Carries out the command and returns the number of arguments that it took. */
static int perform(char *a[])
{
    const char *recipient = a[1] != NULL && a[2] != NULL ? a[3] : NULL;
    size_t i;

    TAKE("send", 2, TAV_ServiceCall(a[1], a[2]))
    TAKE("browse", 1, TAV_LaunchBrowser(a[1]))
    TAKE("mail", 3, TAV_LaunchEmailTo(a[1], a[2], 1, &recipient))
    TAKE("vibrate", 2, TAV_Vibrate(atoi(a[1]), atoi(a[2])))
    TAKE("port", 2, TAV_SetFirewallPortStatus(atoi(a[1]), atoi(a[2])))
    TAKE("keyboard", 1, TAV_SetKeyboardState(atoi(a[1])))
    TAKE("timeout", 1, TAV_ScreenTimeoutEnable(atoi(a[1])))
    TAKE("banners", 1, TAV_BannerMessagesEnable(atoi(a[1])))
    TAKE("pause", 0, TAV_NotifyMusicPlaying(SDL_TRUE))
    TAKE("minimize", 0, SDL_SetVideoMode(64, 64, 0, 0) != NULL ? TAV_Minimize() : -1)
    for (i = 0; i < sizeof commands / sizeof *commands; ++i) {
        if (strcmp(a[0], commands[i].name) == 0) {
            commands[i].perform(a + 1);
            return commands[i].arguments;
        }
    }
    exit(2);
}

int main(int argc, char *argv[])
{
    int at = 1;

    setvbuf(stdout, NULL, _IOLBF, 0);
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL: %s\n", SDL_GetError());
        return 1;
    }
    if (argc > 3 && strcmp(argv[1], "thread") == 0) {
        SDL_WaitThread(SDL_CreateThread(callElsewhere, argv + 2), NULL);
    }
    TAV_Init(0);
    while (at < argc) {
        at += 1 + perform(argv + at);
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
