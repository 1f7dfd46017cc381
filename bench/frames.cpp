// A program that draws with OpenGL. Prints the processor time of a frame in nanoseconds, the
// minimum of many rounds. It uses the library when that is preloaded together with a device.
#include <GL/gl.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "SDL.h"
#include "bench/least.h"

namespace {

constexpr int kSize = 240;
constexpr int kFrames = 20;  // in a round

void frame() {
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    glRotatef(3, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glBegin(GL_TRIANGLES);
    glVertex2f(0, 1);
    glVertex2f(-1, -1);
    glVertex2f(1, -1);
    glEnd();
    SDL_GL_SwapBuffers();
}

}  // namespace

int main() {
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || SDL_SetVideoMode(kSize, kSize, 0, SDL_OPENGL) == nullptr) {
        std::fprintf(stderr, "tav_frames: %s\n", SDL_GetError());
        return EXIT_FAILURE;
    }
    if (void* init = dlsym(RTLD_DEFAULT, "TAV_Init")) {
        reinterpret_cast<int (*)(int)>(init)(0);
    }
    std::printf("%.1f\n", tavbench::least(kFrames, frame));
    SDL_Quit();
    return EXIT_SUCCESS;
}
