#include "simulator/screen/picture.h"

#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/file.h"

namespace tavsim {

using screen::Picture;

namespace {

constexpr size_t kLargestFile = 64 << 20;
constexpr png_uint_32 kMostPixels = 1 << 24;
constexpr uint8_t kRed[] = {255, 0, 0};

struct PngImage : png_image {
    PngImage() : png_image{} { version = PNG_IMAGE_VERSION; }
    ~PngImage() { png_image_free(this); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;
};

std::string bytesOf(const Picture& picture) {
    PngImage image;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    std::string bytes;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    bytes.resize(size);
    const bool isWritten = png_image_write_to_memory(&image, bytes.data(), &size, 0,
                                                     picture.rgb.data(), 0, nullptr) != 0;
    bytes.resize(isWritten ? size : 0);
    return bytes;
}

int pixelDifference(const uint8_t* left, const uint8_t* right) {
    return std::max(
        {std::abs(left[0] - right[0]), std::abs(left[1] - right[1]), std::abs(left[2] - right[2])});
}

uint8_t faint(const uint8_t* pixel) {
    constexpr int kWhite = 255;
    const int grey = (pixel[0] + pixel[1] + pixel[2]) / 3;
    return static_cast<uint8_t>(kWhite - (kWhite - grey) / 4);
}

}  // namespace

bool writePng(const Picture& picture, const std::string& path, std::string* error) {
    const std::string bytes = bytesOf(picture);
    if (bytes.empty()) {
        *error = path + ": the picture cannot be made a PNG";
        return false;
    }
    return base::writeFile(path, bytes, error);
}

std::optional<Picture> readPng(const std::string& path, std::string* error) {
    const std::optional<std::string> bytes = base::readFile(path, kLargestFile, error);
    if (!bytes) {
        return std::nullopt;
    }
    PngImage image;
    if (png_image_begin_read_from_memory(&image, bytes->data(), bytes->size()) == 0) {
        *error = path + ": no PNG: " + image.message;
        return std::nullopt;
    }
    if (image.width > kMostPixels / image.height) {
        *error = path + ": has more than 16 million pixels";
        return std::nullopt;
    }
    image.format = PNG_FORMAT_RGB;
    Picture picture(static_cast<int>(image.width), static_cast<int>(image.height));
    if (png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr) == 0) {
        *error = path + ": no whole PNG: " + image.message;
        return std::nullopt;
    }
    return picture;
}

Difference difference(const Picture& left, const Picture& right, int tolerance) {
    Difference found;
    for (size_t at = 0; at < left.rgb.size(); at += 3) {
        const int differs = pixelDifference(&left.rgb[at], &right.rgb[at]);
        found.pixels += differs > tolerance ? 1 : 0;
        found.greatest = std::max(found.greatest, differs);
    }
    return found;
}

Picture comparison(const Picture& left, const Picture& right, int tolerance) {
    const int width = left.width;
    Picture all(3 * width, left.height);
    for (int y = 0; y < left.height; ++y) {
        for (int x = 0; x < width; ++x) {
            const uint8_t* l = left.pixel(x, y);
            const uint8_t* r = right.pixel(x, y);
            std::copy_n(l, 3, all.pixel(x, y));
            std::copy_n(r, 3, all.pixel(width + x, y));
            if (pixelDifference(l, r) > tolerance) {
                std::copy_n(kRed, 3, all.pixel(2 * width + x, y));
            } else {
                std::fill_n(all.pixel(2 * width + x, y), 3, faint(r));
            }
        }
    }
    return all;
}

}  // namespace tavsim
