#include "front/frames.h"

#include "SDL.h"
#include "front/next.h"
#include "platform/visibility.h"

namespace front {

constinit std::atomic<bool> g_areFramesWatched = false;

}  // namespace front

extern "C" TAV_PLATFORM_API void SDL_GL_SwapBuffers(void) {
    static const auto real = TAV_FRONT_NEXT(SDL_GL_SwapBuffers);
    if (front::g_areFramesWatched.load(std::memory_order_relaxed)) {
        front::keepFrame();
    }
    real();
}
