// The application's screen.
#pragma once

#include <optional>
#include <string>

#include "screen/picture.h"

namespace screen {

// That of its surface; nothing if it has none.
struct ScreenSize {
    int width;
    int height;
};
std::optional<ScreenSize> screenSize();

// The current content of its surface, or the last frame that it has shown with OpenGL. Nothing,
// with a line in `error`, if it has none.
std::optional<Picture> screenPicture(std::string* error);

}  // namespace screen
