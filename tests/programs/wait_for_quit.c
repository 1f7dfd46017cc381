/* Shows the keyboard, asks a service and runs until it is asked to quit, or for a minute. With the
   argument "fork" it first starts a process that ends at once, with "thread" it ends its first
   thread and stays, with "close FILE" it closes all descriptors and has its file behind their
   numbers. */
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SDL.h"
#include "tav.h"

#define STEP 5
#define LONGEST 60000
#define MOST_USED 700

static void *stay(void *unused)
{
    pause();
    return unused;
}

int main(int argc, char *argv[])
{
    int waited;

    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 2;
    }
    TAV_Init(0);
    TAV_SetKeyboardState(SDL_TRUE);
    TAV_ServiceCall("vire://com.vire.battery/status", "{\"from\":\"wait_for_quit\"}");
    if (argc > 1 && strcmp(argv[1], "fork") == 0) {
        if (fork() == 0) {
            exit(0);
        }
        wait(NULL);
    }
    if (argc > 1 && strcmp(argv[1], "thread") == 0) {
        pthread_t thread;
        pthread_create(&thread, NULL, stay, NULL);
        pthread_exit(NULL);
    }
    if (argc > 2 && strcmp(argv[1], "close") == 0) {
        close(STDERR_FILENO);
        waited = open(argv[2], O_WRONLY | O_CREAT, 0600);
        closefrom(STDERR_FILENO + 1);
        TAV_SetKeyboardState(SDL_FALSE);
        while (dup2(STDERR_FILENO, ++waited) < MOST_USED) {}
    }
    for (waited = 0; waited < LONGEST; waited += STEP) {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_QUIT) {
                printf("quit\n");
                TAV_Quit();
                SDL_Quit();
                return 0;
            }
        }
        SDL_Delay(STEP);
    }
    return 1;
}
