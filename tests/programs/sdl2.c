/* A program with SDL 2, whose functions have the same names as those of SDL 1.2. It receives an
 * event in two ways and waits a moment. */
#include <stdint.h>
#include <stdio.h>

#define INIT_EVENTS 0x4000u
#define USER_EVENT 0x8000u

union event {
    uint32_t type;
    char bytes[128];
};

int SDL_Init(uint32_t flags);
int SDL_PushEvent(union event *event);
int SDL_PollEvent(union event *event);
int SDL_WaitEvent(union event *event);
uint32_t SDL_GetTicks(void);
void SDL_Delay(uint32_t milliseconds);

int main(void)
{
    union event event = {USER_EVENT};

    if (SDL_Init(INIT_EVENTS) != 0 || SDL_PushEvent(&event) != 1 || SDL_PushEvent(&event) != 1) {
        return 2;
    }
    do {
        if (!SDL_WaitEvent(&event)) {
            return 1;
        }
    } while (event.type != USER_EVENT);
    while (!SDL_PollEvent(&event) || event.type != USER_EVENT) {}
    SDL_Delay(1);
    printf("SDL 2\n");
    return SDL_GetTicks() > 3600 * 1000;
}
