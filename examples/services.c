/* Calls services over the message bus: one call with a reply, a subscription, and the two ways in
 * which a call can fail. Ends by itself after three ticks of the clock. */
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

#define BATTERY "vire://com.vire.battery/status"
#define CLOCK "vire://com.vire.clock/ticks"
#define NOWHERE "vire://com.vire.nowhere/hello"
#define VAULT "vire://com.vire.vault/open"

#define TICKS_WANTED 3
#define LONGEST_RUN_MS 10000

/* Each call hands it to its reply function as the user data. */
typedef struct {
    int answers;
    int ticks;
} Progress;

/* The reply is there only while the function runs: copy what you keep. */
static void onBattery(TAV_ServiceParameters *reply, void *userData)
{
    Progress *progress = userData;
    char source[32];

    if (TAV_ParamExists(reply, "percent")) {
        /* A text that does not fit leaves the buffer empty. */
        TAV_GetParamString(reply, "source", source, sizeof source);
        printf("Battery: %d percent, %.1f degrees, %s, read from %s\n",
               TAV_GetParamInt(reply, "percent"), TAV_GetParamDouble(reply, "temperature"),
               TAV_GetParamBool(reply, "charging") ? "charging" : "not charging", source);
    }
    printf("The whole reply: %s\n", TAV_GetParamJson(reply));
    ++progress->answers;
}

/* A service reports a failure in its reply. */
static void onHello(TAV_ServiceParameters *reply, void *userData)
{
    Progress *progress = userData;
    char error[128];

    if (!TAV_GetParamBool(reply, "returnValue")) {
        TAV_GetParamString(reply, "errorText", error, sizeof error);
        printf("Nobody to greet: %s\n", error);
    }
    ++progress->answers;
}

static void onTick(TAV_ServiceParameters *reply, void *userData)
{
    Progress *progress = userData;

    printf("Tick %d\n", TAV_GetParamInt(reply, "tick"));
    ++progress->ticks;
    if (progress->ticks == TICKS_WANTED) {
        TAV_UnregisterServiceCallback(onTick);
    }
}

/* SDL_TRUE for a call with one reply, SDL_FALSE for a subscription. */
static int call(const char *uri, const char *payload, TAV_ServiceCallback onReply,
                Progress *progress, SDL_bool oneReply)
{
    if (TAV_ServiceCallWithCallback(uri, payload, onReply, progress, oneReply) == TAV_NOERROR) {
        return 1;
    }
    printf("%s: %s\n", uri, TAV_GetError());
    return 0;
}

/* Replies come while the application polls its events. */
static void waitForReplies(const Progress *progress, int answersExpected)
{
    const Uint32 start = SDL_GetTicks();
    SDL_Event event;

    while (progress->answers < answersExpected || progress->ticks < TICKS_WANTED) {
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_QUIT) {
                return;
            }
        }
        if (SDL_GetTicks() - start > LONGEST_RUN_MS) {
            printf("Some replies never came.\n");
            return;
        }
        SDL_Delay(10);
    }
}

int main(int argc, char *argv[])
{
    Progress progress = {0, 0};
    int answersExpected = 0;
    (void)argc;
    (void)argv;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);

    answersExpected += call(BATTERY, "{}", onBattery, &progress, SDL_TRUE);
    answersExpected += call(NOWHERE, "{\"name\":\"world\"}", onHello, &progress, SDL_TRUE);
    answersExpected += call(VAULT, "{}", onHello, &progress, SDL_TRUE);
    if (!call(CLOCK, "{\"subscribe\":true}", onTick, &progress, SDL_FALSE)) {
        progress.ticks = TICKS_WANTED;
    }
    waitForReplies(&progress, answersExpected);

    TAV_Quit();
    SDL_Quit();
    return 0;
}
