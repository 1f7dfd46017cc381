// Pictures as PNG files, and how two of them differ.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "screen/picture.h"

namespace tavsim {

// Writes the file atomically. False, with a line in `error`, on failure.
bool writePng(const screen::Picture& picture, const std::string& path, std::string* error);

// Without a picture, `error` is a line that names the file.
std::optional<screen::Picture> readPng(const std::string& path, std::string* error);

// The difference between two pictures of the same size.
struct Difference {
    size_t pixels = 0;  // with a channel that differs by more than the tolerance
    int greatest = 0;   // the largest difference of all channels
};
Difference difference(const screen::Picture& left, const screen::Picture& right, int tolerance);

// Both pictures side by side, and a third one that shows the pixels that differ by more than the
// tolerance in red, on the second picture in faint grey.
screen::Picture comparison(const screen::Picture& left, const screen::Picture& right,
                           int tolerance);

}  // namespace tavsim
