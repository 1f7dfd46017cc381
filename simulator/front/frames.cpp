// Interposes the function with which an application shows what it has drawn with OpenGL.
#include "simulator/screen/frames.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"
#include "simulator/device/edge.h"

extern "C" TAV_PLATFORM_API void SDL_GL_SwapBuffers(void) try {
    static const auto real = TAV_FRONT_NEXT(SDL_GL_SwapBuffers);
    if (tavsim::areFramesWatched()) {
        tavsim::keepFrame();
    }
    real();
} catch (...) {
    tavsim::endProgramByException();
}
