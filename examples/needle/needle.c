/* A compass needle, drawn with OpenGL, that turns with each reading. */
#include <GL/gl.h>
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

enum { SIZE = 240 };

static void draw(double heading)
{
    glClear(GL_COLOR_BUFFER_BIT);
    glLoadIdentity();
    glRotated(heading, 0, 0, 1);
    glBegin(GL_TRIANGLES);
    glColor3f(1.0f, 0.1f, 0.1f);
    glVertex2f(0.0f, 0.9f);
    glColor3f(0.9f, 0.9f, 0.9f);
    glVertex2f(-0.3f, -0.5f);
    glVertex2f(0.3f, -0.5f);
    glEnd();
    SDL_GL_SwapBuffers();
}

int main(int argc, char *argv[])
{
    SDL_Event event;

    (void)argc;
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1) != 0 ||
        SDL_SetVideoMode(SIZE, SIZE, 0, SDL_OPENGL) == NULL) {
        fprintf(stderr, "%s: %s\n", argv[0], SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    TAV_EnableCompass(SDL_TRUE);
    while (SDL_WaitEvent(&event) && event.type != SDL_QUIT && event.type != SDL_KEYDOWN) {
        TAV_CompassReading compass;
        if (event.type == SDL_USEREVENT && TAV_GetCompass(&compass) == TAV_NOERROR) {
            draw(compass.doubleValue1);
        }
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
