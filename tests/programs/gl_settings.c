/* Fills its screen with OpenGL. With an argument, it first changes settings that affect
 * reading pixels. At its end it names those that somebody else has changed. */
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <stdio.h>

#include "SDL.h"
#include "tav.h"

enum { SETTINGS = 4 };
static const GLenum names[SETTINGS] = {GL_READ_FRAMEBUFFER_BINDING, GL_PACK_ALIGNMENT,
                                       GL_PIXEL_PACK_BUFFER_BINDING, GL_RED_SCALE};

static void setOddly(void)
{
    GLuint made;
    glReadBuffer(GL_FRONT);
    glGetError(); /* some builds of SDL draw into a framebuffer object, which has no front buffer */
    glGenFramebuffers(1, &made);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, made);
    glGenBuffers(1, &made);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, made);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    glPixelTransferi(GL_RED_SCALE, 0);
}

int main(int argc, char *argv[])
{
    GLint before[SETTINGS], after;
    SDL_Event event;
    int i;
    SDL_Init(SDL_INIT_VIDEO);
    SDL_SetVideoMode(61, 41, 0, SDL_OPENGL); /* no multiple of an alignment */
    TAV_Init(0);
    if (argc > 1) {
        setOddly();
    }
    for (i = 0; i < SETTINGS; ++i) {
        glGetIntegerv(names[i], &before[i]);
    }
    glClearColor(1, 0, 0, 1);
    do {
        glClear(GL_COLOR_BUFFER_BIT);
        SDL_GL_SwapBuffers();
        SDL_Delay(20);
    } while (!SDL_PollEvent(&event) || event.type != SDL_QUIT);
    for (i = 0; i < SETTINGS; ++i) {
        glGetIntegerv(names[i], &after);
        if (after != before[i] || glGetError() != GL_NO_ERROR) {
            printf("%s: 0x%x is %d in place of %d\n", argv[0], names[i], after, before[i]);
        }
    }
    SDL_Quit();
    return 0;
}
