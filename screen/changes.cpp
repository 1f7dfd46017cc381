#include "screen/changes.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json/writer.h"
#include "screen/screen.h"

namespace screen {
namespace {

// Between two looks at a screen that does not change: as long as a smooth animation takes.
constexpr std::chrono::milliseconds kBetweenLooks(15);

constexpr std::chrono::seconds kLongestSilence(5);

// Columns and rows; `right` and `bottom` do not belong to it.
struct Part {
    int left, top, right, bottom;
};

std::string_view rowOf(const Picture& picture, int y) {
    const auto* bytes = reinterpret_cast<const char*>(picture.pixel(0, y));
    return {bytes, 3 * static_cast<size_t>(picture.width)};
}

// From the first column that differs to the last, in a part of one row.
Part changedPart(std::string_view before, std::string_view now, int y) {
    const auto same =
        std::mismatch(before.begin(), before.end(), now.begin()).first - before.begin();
    const auto sameAtEnd =
        std::mismatch(before.rbegin(), before.rend(), now.rbegin()).first - before.rbegin();
    const auto width = static_cast<int>(before.size() / 3);
    return {static_cast<int>(same / 3), y, width - static_cast<int>(sameAtEnd / 3), y + 1};
}

// One part for each run of rows that differ.
std::vector<Part> changedParts(const Picture& before, const Picture& now) {
    std::vector<Part> parts;
    for (int y = 0; y < now.height; ++y) {
        const std::string_view rowBefore = rowOf(before, y);
        const std::string_view row = rowOf(now, y);
        if (row == rowBefore) {
            continue;
        }
        const Part changed = changedPart(rowBefore, row, y);
        if (parts.empty() || parts.back().bottom < y) {
            parts.push_back(changed);
            continue;
        }
        Part& run = parts.back();
        run = {std::min(run.left, changed.left), run.top, std::max(run.right, changed.right),
               changed.bottom};
    }
    return parts;
}

std::string encoded(const Picture& picture, const std::vector<Part>& parts) {
    base::JsonWriter json;
    json.beginObject().members("width", picture.width, "height", picture.height);
    json.key("parts").beginArray();
    size_t pixels = 0;
    for (const auto& [left, top, right, bottom] : parts) {
        json.beginArray().value(left).value(top).value(right - left).value(bottom - top).endArray();
        pixels += static_cast<size_t>(right - left) * static_cast<size_t>(bottom - top);
    }
    std::string bytes = json.endArray().endObject().take() + "\n";
    bytes.reserve(bytes.size() + 3 * pixels);
    for (const auto& [left, top, right, bottom] : parts) {
        for (int y = top; y < bottom; ++y) {
            bytes +=
                rowOf(picture, y)
                    .substr(3 * static_cast<size_t>(left), 3 * static_cast<size_t>(right - left));
        }
    }
    return bytes;
}

}  // namespace

std::optional<std::string> ScreenChanges::next(std::string* error) {
    m_asked = SteadyClock::now();
    if (!m_watch) {
        m_watch.emplace();
    }
    *error = "nothing has changed";
    if (m_asked - m_seenUnchanged < kBetweenLooks) {
        return std::nullopt;
    }
    std::optional<Picture> picture = screenPicture(error);
    if (!picture) {
        return std::nullopt;
    }
    const bool isComparable =
        m_shown && m_shown->width == picture->width && m_shown->height == picture->height;
    const std::vector<Part> parts = isComparable
                                        ? changedParts(*m_shown, *picture)
                                        : std::vector{Part{0, 0, picture->width, picture->height}};
    if (parts.empty()) {
        m_seenUnchanged = m_asked;
        return std::nullopt;
    }
    m_shown = std::move(picture);
    return encoded(*m_shown, parts);
}

void ScreenChanges::forget() {
    m_watch.reset();
    m_shown.reset();
    m_seenUnchanged = {};
}

void ScreenChanges::forgetWhenUnasked() {
    if (m_watch && SteadyClock::now() - m_asked > kLongestSilence) {
        forget();
    }
}

}  // namespace screen
