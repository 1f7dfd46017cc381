#include "screen/frames.h"

#define GL_GLEXT_PROTOTYPES  // for their types; the functions are looked up
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <initializer_list>
#include <mutex>
#include <string_view>
#include <utility>

#include "SDL.h"
#include "front/events.h"
#include "front/next.h"

namespace screen {
namespace {

struct Frames {
    std::mutex mutex;  // an application may draw on a thread of its own
    std::optional<Picture> last;
    bool areAllKept = false;
    int watches = 0;
};

Frames& frames() {
    // Never destroyed, because the device ends after static objects are destroyed.
    static Frames& instance = *new Frames;
    return instance;
}

// Only for contexts that have the function. SDL's own replacements of some functions are found too.
template <typename Function>
Function* findGl(const char* name) {
    static const auto find = TAV_FRONT_NEXT(SDL_GL_GetProcAddress);
    return reinterpret_cast<Function*>(find(name));
}

#define TAV_GL(function) findGl<decltype(function)>(#function)

bool hasExtension(std::string_view name) {
    const auto* all = reinterpret_cast<const char*>(TAV_GL(glGetString)(GL_EXTENSIONS));
    return all != nullptr && std::string_view(all).find(name) != std::string_view::npos;
}

using Names = std::initializer_list<GLenum>;

GLint valueOf(GLenum name) {
    GLint value = 0;
    TAV_GL(glGetIntegerv)(name, &value);
    return value;
}

// Binds the window in place of a framebuffer object of the application.
class WindowAsSource {
public:
    WindowAsSource() {
        if (!hasExtension("GL_ARB_framebuffer_object")) {
            return;
        }
        m_before = static_cast<GLuint>(valueOf(GL_READ_FRAMEBUFFER_BINDING));
        TAV_GL(glBindFramebuffer)(GL_READ_FRAMEBUFFER, 0);
        m_isOfSdl = valueOf(GL_READ_FRAMEBUFFER_BINDING) != 0;
    }
    ~WindowAsSource() {
        if (m_before) {
            TAV_GL(glBindFramebuffer)(GL_READ_FRAMEBUFFER, *m_before);
        }
    }
    WindowAsSource(const WindowAsSource&) = delete;
    WindowAsSource& operator=(const WindowAsSource&) = delete;

    // Whether SDL gives the application a framebuffer object as its window, to scale it.
    bool isOfSdl() const { return m_isOfSdl; }

private:
    std::optional<GLuint> m_before;
    bool m_isOfSdl = false;
};

// Resets the application's settings for reading pixels, and restores them at the end.
class PlainReading {
public:
    explicit PlainReading(bool choosesBuffer) {
        TAV_GL(glPushAttrib)(GL_PIXEL_MODE_BIT);
        TAV_GL(glPushClientAttrib)(GL_CLIENT_PIXEL_STORE_BIT);
        for (const GLenum name : Names{GL_PACK_SWAP_BYTES, GL_PACK_LSB_FIRST, GL_PACK_ROW_LENGTH,
                                       GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS}) {
            TAV_GL(glPixelStorei)(name, 0);
        }
        TAV_GL(glPixelStorei)(GL_PACK_ALIGNMENT, 1);
        TAV_GL(glPixelTransferi)(GL_MAP_COLOR, 0);
        for (const GLenum name : Names{GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE}) {
            TAV_GL(glPixelTransferi)(name, 1);
        }
        for (const GLenum name : Names{GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS}) {
            TAV_GL(glPixelTransferi)(name, 0);
        }
        if (hasExtension("GL_ARB_pixel_buffer_object")) {
            TAV_GL(glBindBuffer)(GL_PIXEL_PACK_BUFFER, 0);
        }
        if (choosesBuffer) {
            TAV_GL(glReadBuffer)(valueOf(GL_DOUBLEBUFFER) != 0 ? GL_BACK : GL_FRONT);
        }
    }
    ~PlainReading() {
        TAV_GL(glPopClientAttrib)();
        TAV_GL(glPopAttrib)();
    }
    PlainReading(const PlainReading&) = delete;
    PlainReading& operator=(const PlainReading&) = delete;

    // Otherwise the values of the application could not be saved.
    static bool isPossible() {
        return valueOf(GL_ATTRIB_STACK_DEPTH) < valueOf(GL_MAX_ATTRIB_STACK_DEPTH) &&
               valueOf(GL_CLIENT_ATTRIB_STACK_DEPTH) < valueOf(GL_MAX_CLIENT_ATTRIB_STACK_DEPTH);
    }
};

bool hasContext() {
    const auto getString = TAV_GL(glGetString);
    return getString != nullptr && getString(GL_VERSION) != nullptr;
}

// The rows from the bottom, as OpenGL has them.
Picture readWindow(int width, int height) {
    Picture picture(width, height);
    const WindowAsSource window;
    const PlainReading plain(!window.isOfSdl());
    TAV_GL(glReadPixels)(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, picture.rgb.data());
    return picture;
}

Picture upsideDown(const Picture& picture) {
    Picture turned(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y) {
        std::copy_n(picture.pixel(0, picture.height - 1 - y), 3 * picture.width,
                    turned.pixel(0, y));
    }
    return turned;
}

// With the lock held.
void keepNoMoreThanIsWatched() {
    if (!frames().areAllKept && frames().watches == 0) {
        front::g_areFramesWatched = false;
        frames().last.reset();
    }
}

}  // namespace

void keepFrame() {
    static const auto videoSurface = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    const SDL_Surface* surface = videoSurface();
    if (surface == nullptr || !hasContext() || !PlainReading::isPossible()) {
        return;
    }
    Picture frame = readWindow(surface->w, surface->h);
    const std::lock_guard lock(frames().mutex);
    frames().last = std::move(frame);
}

void watchFrames() {
    const std::lock_guard lock(frames().mutex);
    frames().areAllKept = true;
    front::g_areFramesWatched = true;
}

FrameWatch::FrameWatch() {
    const std::lock_guard lock(frames().mutex);
    ++frames().watches;
    front::g_areFramesWatched = true;
}

FrameWatch::~FrameWatch() {
    const std::lock_guard lock(frames().mutex);
    --frames().watches;
    keepNoMoreThanIsWatched();
}

std::optional<Picture> lastFrame() {
    const std::lock_guard lock(frames().mutex);
    if (!frames().last) {
        front::g_areFramesWatched = true;
        return std::nullopt;
    }
    const Picture picture = upsideDown(*frames().last);
    keepNoMoreThanIsWatched();
    return picture;
}

void stopFrames() {
    const std::lock_guard lock(frames().mutex);
    front::g_areFramesWatched = false;
    frames().areAllKept = false;
    frames().last.reset();
}

}  // namespace screen
