/* Draws with OpenGL, and says what showing a frame has changed. With an
 * argument, nothing that concerns reading is as OpenGL begins with. */
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <stdio.h>
#include <string.h>

#include "SDL.h"
#include "tav.h"

enum { SETTINGS = 4 };

static void get(GLint values[SETTINGS])
{
    static const GLenum names[SETTINGS] = {GL_READ_FRAMEBUFFER_BINDING, GL_PACK_ALIGNMENT,
                                           GL_PIXEL_PACK_BUFFER_BINDING, GL_RED_SCALE};
    int i;
    for (i = 0; i < SETTINGS; ++i) {
        glGetIntegerv(names[i], &values[i]);
    }
}

static void setOddly(void)
{
    GLuint framebuffer, buffer;
    glReadBuffer(GL_FRONT);
    glGetError(); /* of an SDL whose window is a framebuffer object, which has no front */
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    glPixelStorei(GL_PACK_SKIP_ROWS, 5);
    glPixelTransferi(GL_RED_SCALE, 0);
}

/* Two colours, in a size that is no multiple of an alignment. */
static void draw(void)
{
    glDisable(GL_SCISSOR_TEST);
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 20, 10);
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
}

int main(int argc, char *argv[])
{
    GLint before[SETTINGS], after[SETTINGS];
    SDL_Event event;
    SDL_Init(SDL_INIT_VIDEO);
    SDL_SetVideoMode(61, 41, 0, SDL_OPENGL);
    TAV_Init(0);
    if (argc > 1) {
        setOddly();
    }
    do {
        draw();
        get(before);
        SDL_GL_SwapBuffers();
        get(after);
        SDL_Delay(20);
    } while (!SDL_PollEvent(&event) || event.type != SDL_QUIT);
    if (glGetError() != GL_NO_ERROR || memcmp(before, after, sizeof before) != 0) {
        printf("%s: not as before\n", argv[0]);
    }
    SDL_Quit();
    return 0;
}
