/* A plug-in with a picture, which is red while it is touched, and else black. Prints each key and
 * touch, with SDL's state of the mouse and the keys. The key w lets it wait for minutes without
 * handling events. Ends when the key q is released.
 *
 * usage: picture [opengl]
 */
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

typedef void (*ClearColor)(float red, float green, float blue, float alpha);
typedef void (*Clear)(unsigned buffers);

static void draw(int red)
{
    SDL_Surface *screen = SDL_GetVideoSurface();

    if ((screen->flags & SDL_OPENGL) != 0) {
        const unsigned colors = 0x4000;
        ((ClearColor)SDL_GL_GetProcAddress("glClearColor"))((float)red, 0, 0, 1);
        ((Clear)SDL_GL_GetProcAddress("glClear"))(colors);
        SDL_GL_SwapBuffers();
    } else {
        SDL_FillRect(screen, NULL, SDL_MapRGB(screen->format, (Uint8)(255 * red), 0, 0));
        SDL_Flip(screen);
    }
}

static void print(const SDL_Event *event)
{
    const char *sign = event->type == SDL_KEYDOWN || event->type == SDL_MOUSEBUTTONDOWN ? "+" : "-";
    int x, y, buttons, key, count;
    const Uint8 *keys = SDL_GetKeyState(&count);

    if (event->type == SDL_KEYDOWN || event->type == SDL_KEYUP) {
        printf("%s%s %x,", sign, SDL_GetKeyName(event->key.keysym.sym), event->key.keysym.unicode);
    } else {
        printf("%s%d,%d,", sign, event->button.x, event->button.y);
    }
    buttons = SDL_GetMouseState(&x, &y);
    printf(" %d at %d,%d", buttons, x, y);
    for (key = 0; key < count; ++key) {
        if (keys[key]) {
            printf(" %s", SDL_GetKeyName((SDLKey)key));
        }
    }
    printf("\n");
}

int main(int argc, char *argv[])
{
    SDL_Event event = {SDL_NOEVENT};
    int isTouched = 0;

    (void)argv;
    setvbuf(stdout, NULL, _IOLBF, 0);
    SDL_Init(SDL_INIT_VIDEO);
    SDL_EnableUNICODE(1);
    if (SDL_SetVideoMode(480, 800, 0, argc > 1 ? SDL_OPENGL : SDL_SWSURFACE) == NULL) {
        fprintf(stderr, "SDL: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        return 1;
    }
    while (event.type != SDL_KEYUP || event.key.keysym.sym != SDLK_q) {
        draw(isTouched);
        SDL_Delay(1);
        if (!SDL_PollEvent(&event)) {
            continue;
        }
        if (event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEBUTTONUP) {
            isTouched = event.type == SDL_MOUSEBUTTONDOWN;
            print(&event);
        } else if (event.type == SDL_KEYDOWN || event.type == SDL_KEYUP) {
            print(&event);
        }
        if (event.type == SDL_KEYDOWN && event.key.keysym.sym == SDLK_w) {
            SDL_Delay(600000);
        }
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
