// The names of keys, known where SDL is not.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "SDL.h"

namespace input {

// The key that SDL_GetKeyName() gives this name. Without one, `error` is a line that may suggest
// another.
std::optional<SDLKey> keyNamed(std::string_view name, std::string* error);

}  // namespace input
