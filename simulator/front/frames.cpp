// The device's part of SDL_GL_SwapBuffers().
#include "front/frames.h"

#include "screen/frames.h"
#include "simulator/device/edge.h"

void front::keepFrame() try { screen::keepFrame(); } catch (...) {
    tavsim::endProgramByException();
}
