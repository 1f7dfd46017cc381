/* Does on several threads at once what a program may do on any thread: events, time, timers, the
 * device's files and the user id, both before and after the first call of the library. */
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "SDL.h"
#include "SDL_thread.h"
#include "tav.h"

#define WORKERS 3

static int rounds[WORKERS];
static int stopping;
static int failures;

static void expect(int condition, const char *what)
{
    if (!condition && __atomic_fetch_add(&failures, 1, __ATOMIC_RELAXED) == 0) {
        printf("%s\n", what);
    }
}

static void read_unique_id(char *id, int size)
{
    FILE *file = fopen("/proc/nduid", "r");

    id[0] = '\0';
    expect(file != NULL && fgets(id, size, file) != NULL && fclose(file) == 0,
           "the unique id cannot be read");
}

static Uint32 tick(Uint32 interval, void *unused)
{
    (void)unused;
    return interval;
}

static int work(void *round)
{
    const uid_t user = getuid();
    char first_id[64];

    read_unique_id(first_id, sizeof first_id);
    while (!__atomic_load_n(&stopping, __ATOMIC_RELAXED)) {
        const Uint32 start = SDL_GetTicks();
        SDL_TimerID timer = SDL_AddTimer(10, tick, NULL);
        SDL_Event event;
        char id[64];

        expect(timer != NULL, "there is no timer");
        SDL_PumpEvents();
        SDL_PollEvent(&event);
        SDL_Delay(1);
        expect(SDL_GetTicks() - start < 1u << 31, "time runs back");
        expect(SDL_RemoveTimer(timer) == SDL_TRUE, "the timer is gone");
        expect(getuid() == user, "the user changes");
        read_unique_id(id, sizeof id);
        expect(strcmp(id, first_id) == 0, "the device changes");
        __atomic_fetch_add((int *)round, 1, __ATOMIC_RELAXED);
    }
    return 0;
}

static int wait_for_end(void *end)
{
    do {
        expect(SDL_WaitEvent(end) == 1, "there is no event queue");
    } while (((SDL_Event *)end)->type != SDL_USEREVENT);
    return 0;
}

static void let_workers_go_round(void)
{
    int i;

    for (i = 0; i < WORKERS; ++i) {
        const int seen = __atomic_load_n(&rounds[i], __ATOMIC_RELAXED);
        while (__atomic_load_n(&rounds[i], __ATOMIC_RELAXED) < seen + 2) {
            SDL_Delay(1);
        }
    }
}

static void on_reply(TAV_ServiceParameters *parameters, void *thread)
{
    (void)parameters;
    expect(SDL_ThreadID() == *(Uint32 *)thread, "the reply comes on another thread");
    *(Uint32 *)thread = 0;
}

int main(void)
{
    SDL_Thread *workers[WORKERS];
    SDL_Thread *waiter;
    SDL_Event end = {SDL_USEREVENT}, received;
    Uint32 thread = SDL_ThreadID();
    int i;

    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0) {
        printf("SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    for (i = 0; i < WORKERS; ++i) {
        workers[i] = SDL_CreateThread(work, &rounds[i]);
    }
    let_workers_go_round();
    TAV_Init(0);
    TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}", on_reply, &thread,
                                SDL_TRUE);
    while (thread != 0) {
        SDL_PumpEvents();
        SDL_Delay(1);
    }
    let_workers_go_round();
    __atomic_store_n(&stopping, 1, __ATOMIC_RELAXED);
    for (i = 0; i < WORKERS; ++i) {
        SDL_WaitThread(workers[i], NULL);
    }
    waiter = SDL_CreateThread(wait_for_end, &received);
    SDL_PushEvent(&end);
    SDL_WaitThread(waiter, NULL);
    TAV_Quit();
    SDL_Quit();
    return failures != 0;
}
