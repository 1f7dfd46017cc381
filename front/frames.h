// Interposes the function with which an application shows what it has drawn with OpenGL.
#pragma once

#include <atomic>

namespace front {

// Whether each frame is to be kept, because somebody is to see it. False until it is set, so that
// others pay nothing.
extern std::atomic<bool> g_areFramesWatched;

// Defined by the implementation. Called by the thread that draws, before it shows a frame.
void keepFrame();

}  // namespace front
