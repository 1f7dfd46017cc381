#include "tools/web/frames.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json/reader.h"
#include "base/json/writer.h"

namespace json = base::json;

namespace web {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// A line is slow where a raw picture takes longer than this, and seems fast where a compressed one
// of some size takes no longer than that.
constexpr milliseconds kSlow(100);
constexpr milliseconds kQuick(50);
constexpr size_t kSomeSize = 16 << 10;
constexpr size_t kNotWorthIt = 64 << 10;  // raw pictures of that size are never compressed
// From one attempt with raw pictures to the next.
constexpr seconds kShortestPause(4);
constexpr seconds kLongestPause(64);

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

// A frame as the device hands it over, with a PNG file in place of each part's pixels, how long
// each is behind its rectangle, and "format":"png" in the first line. Empty where the frame is
// malformed.
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

}  // namespace

Frames::Frames(Origin origin, Sink sink)
    : m_origin(std::move(origin)), m_sink(std::move(sink)), m_pause(kShortestPause) {
}

void Frames::start() {
    m_isWanted = true;
    if (!m_isUnderWay) {
        m_origin.ask();
    }
}

void Frames::stop() {
    m_isWanted = false;
    m_origin.stop();
}

void Frames::shown() {
    if (!m_isUnderWay) {
        return;
    }
    m_isUnderWay = false;
    judgeLine(Clock::now() - m_sent);
    if (m_isWanted) {
        m_origin.ask();
    }
}

void Frames::hand(const std::string& frame) {
    const bool isWorthIt = frame.size() > kNotWorthIt && Clock::now() < m_rawAgain;
    const std::string picture = isWorthIt ? compressed(frame) : std::string();
    m_isCompressed = !picture.empty();
    const std::string& sent = m_isCompressed ? picture : frame;
    m_isUnderWay = true;
    m_size = sent.size();
    m_sent = Clock::now();
    m_sink(sent);
}

void Frames::judgeLine(Clock::duration time) {
    const Clock::time_point now = Clock::now();
    const bool isKnown = m_rawAgain != Clock::time_point::max();
    if (!m_isCompressed && time > kSlow) {
        m_rawAgain = now + m_pause;
        m_pause = std::min<Clock::duration>(2 * m_pause, kLongestPause);
    } else if (!m_isCompressed && m_size > kNotWorthIt) {
        m_pause = kShortestPause;
    } else if (m_isCompressed && time > kQuick && isKnown) {
        m_rawAgain = now + m_pause;
    } else if (!isKnown && time <= kQuick && m_size >= kSomeSize) {
        m_rawAgain = now;
    }
}

}  // namespace web
