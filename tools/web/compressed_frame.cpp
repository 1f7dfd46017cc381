#include "tools/web/compressed_frame.h"

#include <png.h>

#include <array>
#include <vector>

#include "base/json/reader.h"
#include "base/json/writer.h"

namespace json = base::json;

namespace web {
namespace {

constexpr int kMostPixels = 1 << 14;  // in a row, and in a column
constexpr size_t kBytesPerPixel = 3;

using Rectangle = std::array<int, 4>;  // x, y, width, height

struct Header {
    int width = 0;
    int height = 0;
    std::vector<Rectangle> parts;
};

json::Reader rectangle(Rectangle* target) {
    std::vector<json::Reader> numbers;
    for (int& number : *target) {
        numbers.push_back(json::integer(&number, 0, kMostPixels));
    }
    return json::sequence(std::move(numbers));
}

bool readHeader(std::string_view line, Header* header) {
    std::string error;
    return json::read(std::string(line), "frame",
                      json::fields({{"width", json::integer(&header->width, 0, kMostPixels)},
                                    {"height", json::integer(&header->height, 0, kMostPixels)},
                                    {"parts", json::list(&header->parts, rectangle)}}),
                      &error);
}

std::string png(const Rectangle& part, const char* pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(part[2]);
    image.height = static_cast<png_uint_32>(part[3]);
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    const bool isWritten =
        png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels, 0, nullptr) != 0;
    bytes.resize(isWritten ? size : 0);
    png_image_free(&image);
    return bytes;
}

}  // namespace

std::string compressed(std::string_view frame) {
    Header header;
    const size_t end = frame.find('\n');
    if (end == std::string_view::npos || !readHeader(frame.substr(0, end), &header)) {
        return {};
    }
    frame.remove_prefix(end + 1);
    base::JsonWriter line;
    line.beginObject().members("width", header.width, "height", header.height, "format", "png");
    line.key("parts").beginArray();
    std::string files;
    for (const Rectangle& part : header.parts) {
        const size_t size =
            static_cast<size_t>(part[2]) * static_cast<size_t>(part[3]) * kBytesPerPixel;
        const std::string file = size <= frame.size() ? png(part, frame.data()) : std::string();
        if (file.empty()) {
            return {};
        }
        frame.remove_prefix(size);
        line.beginArray();
        for (const int number : part) {
            line.value(number);
        }
        line.value(file.size()).endArray();
        files += file;
    }
    return line.endArray().endObject().take() + "\n" + files;
}

}  // namespace web
