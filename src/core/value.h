// Values from outside whose type promises less than 32 bits.
#ifndef TAV_CORE_VALUE_H
#define TAV_CORE_VALUE_H

#include <cstring>

#include "SDL.h"

namespace tav {

// An enumeration in a caller's hands can hold any 32-bit value, also one that reading it as the
// enumeration would make undefined; so it is taken as the integer it is.
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

#endif
