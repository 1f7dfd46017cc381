#include "screen/screen.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "SDL.h"
#include "front/next.h"
#include "screen/frames.h"

namespace screen {
namespace {

// The pixel's bytes as a number, as SDL reads it.
template <size_t kBytes>
Uint32 pixelValue(const Uint8* bytes) {
    Uint32 value = 0;
    for (size_t i = 0; i < kBytes; ++i) {
        const size_t place = SDL_BYTEORDER == SDL_LIL_ENDIAN ? i : kBytes - 1 - i;
        value |= static_cast<Uint32>(bytes[i]) << 8 * place;
    }
    return value;
}

// Red, green or blue, which have the numbers 0 to 2. Asking SDL for each pixel would take too long,
// so it is asked for each value that the channel can have.
class Channel {
public:
    Channel(const SDL_PixelFormat& format, size_t number);

    Uint8 of(Uint32 pixel) const { return m_bytes[(pixel & m_mask) >> m_shift & 0xFF]; }

private:
    Uint32 m_mask = 0xFF;
    int m_shift = 0;
    Uint8 m_bytes[256] = {};
};

Channel::Channel(const SDL_PixelFormat& format, size_t number) {
    static const auto getRgb = TAV_FRONT_NEXT(SDL_GetRGB);
    int count = 256;
    if (format.palette != nullptr) {
        count = std::min(format.palette->ncolors, count);
    } else {
        m_mask = std::array{format.Rmask, format.Gmask, format.Bmask}[number];
        m_shift = std::array{format.Rshift, format.Gshift, format.Bshift}[number];
    }
    for (int value = 0; value < count; ++value) {
        Uint8 rgb[3];
        getRgb(static_cast<Uint32>(value) << m_shift, &format, &rgb[0], &rgb[1], &rgb[2]);
        m_bytes[value] = rgb[number];
    }
}

using Channels = std::array<Channel, 3>;

template <size_t kBytes>
void convertRow(const Uint8* from, const Channels& channels, int width, Uint8* to) {
    for (int x = 0; x < width; ++x, from += kBytes, to += channels.size()) {
        const Uint32 pixel = pixelValue<kBytes>(from);
        to[0] = channels[0].of(pixel);
        to[1] = channels[1].of(pixel);
        to[2] = channels[2].of(pixel);
    }
}

constexpr decltype(&convertRow<1>) kConvertRow[] = {convertRow<1>, convertRow<2>, convertRow<3>,
                                                    convertRow<4>};

Picture pictureOf(const SDL_Surface& surface) {
    Picture picture(surface.w, surface.h);
    const SDL_PixelFormat& format = *surface.format;
    const Channels channels = {Channel(format, 0), Channel(format, 1), Channel(format, 2)};
    const auto convert = kConvertRow[format.BytesPerPixel - 1];
    for (int y = 0; y < surface.h; ++y) {
        const Uint8* row = static_cast<const Uint8*>(surface.pixels) + ptrdiff_t{y} * surface.pitch;
        convert(row, channels, surface.w, picture.pixel(0, y));
    }
    return picture;
}

SDL_Surface* videoSurface() {
    static const auto get = TAV_FRONT_NEXT(SDL_GetVideoSurface);
    return get();
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

std::optional<ScreenSize> screenSize() {
    const SDL_Surface* surface = videoSurface();
    return surface != nullptr ? std::optional(ScreenSize{surface->w, surface->h}) : std::nullopt;
}

std::optional<Picture> screenPicture(std::string* error) {
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

}  // namespace screen
