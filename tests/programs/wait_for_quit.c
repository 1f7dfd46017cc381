/* Shows the keyboard, calls a service and runs until it is asked to quit. With the argument "fork",
 * it first starts a child process that ends at once. With "thread", its main thread ends while
 * another one stays. With "close FILE", it closes all descriptors and reuses their numbers. With
 * "slow", it takes its time to end. With "big", the kernel takes its time to free its memory. */
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SDL.h"
#include "tav.h"

#define MOST_USED 700
#define MANY_BYTES (256 << 20)

static void *stay(void *unused)
{
    pause();
    return unused;
}

int main(int argc, char *argv[])
{
    const char *way = argc > 1 ? argv[1] : "";
    SDL_Event event;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    TAV_Init(0);
    TAV_SetKeyboardState(SDL_TRUE);
    TAV_ServiceCall("vire://com.vire.battery/status", "{\"from\":\"wait_for_quit\"}");
    if (strcmp(way, "fork") == 0) {
        if (fork() == 0) {
            exit(0);
        }
        wait(NULL);
    } else if (strcmp(way, "thread") == 0) {
        pthread_t thread;
        pthread_create(&thread, NULL, stay, NULL);
        pthread_exit(NULL);
    } else if (strcmp(way, "big") == 0) {
        mmap(NULL, MANY_BYTES, PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    } else if (strcmp(way, "close") == 0) {
        int used;
        close(STDERR_FILENO);
        used = open(argv[2], O_WRONLY | O_CREAT, 0600);
        closefrom(STDERR_FILENO + 1);
        TAV_SetKeyboardState(SDL_FALSE);
        while (dup2(STDERR_FILENO, ++used) < MOST_USED) {}
    }
    while (SDL_WaitEvent(&event) && event.type != SDL_QUIT) {}
    printf("quit\n");
    SDL_Delay(strcmp(way, "slow") == 0 ? 300 : 0);
    TAV_Quit();
    SDL_Quit();
    return 0;
}
