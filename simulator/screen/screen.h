// The application's screen.
#ifndef TAV_SIMULATOR_SCREEN_SCREEN_H
#define TAV_SIMULATOR_SCREEN_SCREEN_H

#include <optional>
#include <string>

#include "simulator/screen/picture.h"

namespace tavsim {

// The current content of its surface. Nothing, with a line in `error`, if it has none with pixels.
std::optional<Picture> screenPicture(std::string* error);

}  // namespace tavsim

#endif
