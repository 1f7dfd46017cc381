// The frames of an application that draws with OpenGL.
//
// Neither buffer can be read once a frame is shown: what the back buffer holds after the swap is
// undefined, and the front buffer belongs to the display. So while somebody watches, each frame is
// read just before it is swapped. In virtual time as in real time, what the application shows is
// the last frame that it has swapped.
#pragma once

#include <optional>

#include "screen/picture.h"

namespace screen {

// Reads the frame in the back buffer, if the thread has an OpenGL context. Called by the thread
// that draws, before each swap, while frames are watched.
void keepFrame();

// Every frame is kept from now on, for a run in which it is known that somebody will look.
void watchFrames();

// Every frame is kept while one of these lives.
class FrameWatch {
public:
    FrameWatch();
    ~FrameWatch();
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;
};

// The last frame that was kept. Without one, all are kept until this is called again.
std::optional<Picture> lastFrame();

// Nobody watches any more.
void stopFrames();

}  // namespace screen
