// What the application shows.
#ifndef TAV_SIMULATOR_SCREEN_SCREEN_H
#define TAV_SIMULATOR_SCREEN_SCREEN_H

#include <optional>
#include <string>

#include "simulator/screen/picture.h"

namespace tavsim {

// Its surface at this moment. Nothing, with a line in `error`, where it has none with pixels.
std::optional<Picture> screenPicture(std::string* error);

}  // namespace tavsim

#endif
