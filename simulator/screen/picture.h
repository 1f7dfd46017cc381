// Pictures, and PNG files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavsim {

// Rows of pixels from the top; each pixel is red, green and blue.
struct Picture {
    Picture(int itsWidth, int itsHeight);

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

// Writes the file atomically. False, with a line in `error`, on failure.
bool writePng(const Picture& picture, const std::string& path, std::string* error);

// Without a picture, `error` is a line that names the file.
std::optional<Picture> readPng(const std::string& path, std::string* error);

// The difference between two pictures of the same size.
struct Difference {
    size_t pixels = 0;  // with a channel that differs by more than the tolerance
    int greatest = 0;   // the largest difference of all channels
};
Difference difference(const Picture& left, const Picture& right, int tolerance);

// Both pictures side by side, and a third one that shows the pixels that differ by more than the
// tolerance in red, on the second picture in faint grey.
Picture comparison(const Picture& left, const Picture& right, int tolerance);

}  // namespace tavsim
