// Values from outside whose type does not allow every bit pattern.
#pragma once

#include <cstring>

#include "SDL.h"

namespace tav {

// A caller can store any 32-bit value in an enumeration, even one for which reading the enumeration
// is undefined behaviour. So it is copied as an integer.
template <typename Enumeration>
Sint32 rawValue(const Enumeration& value) {
    static_assert(sizeof(Enumeration) == sizeof(Sint32));
    Sint32 raw;
    std::memcpy(&raw, &value, sizeof raw);  // a bit_cast would read the enumeration
    return raw;
}

inline SDL_bool sdlBool(bool value) {
    return value ? SDL_TRUE : SDL_FALSE;
}

inline const char* trueOrFalse(Sint32 value) {
    return value != 0 ? "true" : "false";
}

}  // namespace tav
