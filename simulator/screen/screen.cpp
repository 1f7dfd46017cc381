#include "simulator/screen/screen.h"

#include <cstddef>
#include <string_view>

#include "SDL.h"
#include "front/next.h"
#include "simulator/screen/frames.h"

namespace tavsim {
namespace {

// The pixel's bytes as a number, as SDL reads it.
Uint32 pixelValue(const Uint8* bytes, int count) {
    Uint32 value = 0;
    for (int i = 0; i < count; ++i) {
        const int byte = SDL_BYTEORDER == SDL_LIL_ENDIAN ? count - 1 - i : i;
        value = value << 8 | bytes[byte];
    }
    return value;
}

Picture pictureOf(const SDL_Surface& surface) {
    static const auto getRgb = TAV_FRONT_NEXT(SDL_GetRGB);
    Picture picture(surface.w, surface.h);
    const int bytes = surface.format->BytesPerPixel;
    for (int y = 0; y < surface.h; ++y) {
        const Uint8* at = static_cast<const Uint8*>(surface.pixels) + ptrdiff_t{y} * surface.pitch;
        for (int x = 0; x < surface.w; ++x, at += bytes) {
            Uint8* pixel = picture.pixel(x, y);
            getRgb(pixelValue(at, bytes), surface.format, &pixel[0], &pixel[1], &pixel[2]);
        }
    }
    return picture;
}

std::string whyNoSurface() {
    static const auto driverName = TAV_FRONT_NEXT(SDL_VideoDriverName);
    char name[16];
    const bool isDummy =
        driverName(name, sizeof name) != nullptr && std::string_view(name) == "dummy";
    return std::string("the application has no surface") +
           (isDummy ? ", and gets none for OpenGL from SDL's video driver \"dummy\"" : "");
}

std::optional<Picture> framePicture(std::string* error) {
    std::optional<Picture> picture = lastFrame();
    if (!picture) {
        *error = "the application draws with OpenGL and has shown no frame since watching began";
    }
    return picture;
}

}  // namespace

std::optional<Picture> screenPicture(std::string* error) {
    static const auto videoSurface = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    static const auto lockSurface = TAV_FRONT_NEXT(SDL_LockSurface);
    static const auto unlockSurface = TAV_FRONT_NEXT(SDL_UnlockSurface);
    SDL_Surface* surface = videoSurface();
    if (surface == nullptr) {
        *error = whyNoSurface();
        return std::nullopt;
    }
    // Also of a surface for OpenGL with pixels, because what is drawn is not in these alone.
    if ((surface->flags & SDL_OPENGL) == SDL_OPENGL) {
        return framePicture(error);
    }
    // The application may itself hold the lock. Locks of SDL are counted, so this works.
    if (lockSurface(surface) != 0) {
        *error = "the application's surface cannot be locked";
        return std::nullopt;
    }
    std::optional<Picture> picture;
    if (surface->pixels != nullptr) {
        picture = pictureOf(*surface);
    } else {
        *error = "the application's surface has no pixels";
    }
    unlockSurface(surface);
    return picture;
}

}  // namespace tavsim
