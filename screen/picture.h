// A picture in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace screen {

// Rows of pixels from the top; each pixel is red, green and blue.
struct Picture {
    Picture(int itsWidth, int itsHeight)
        : width(itsWidth),
          height(itsHeight),
          rgb(3 * static_cast<size_t>(itsWidth) * static_cast<size_t>(itsHeight)) {}

    uint8_t* pixel(int x, int y) { return &rgb[index(x, y)]; }
    const uint8_t* pixel(int x, int y) const { return &rgb[index(x, y)]; }

    int width;
    int height;
    std::vector<uint8_t> rgb;

private:
    size_t index(int x, int y) const {
        return 3 * (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x));
    }
};

}  // namespace screen
