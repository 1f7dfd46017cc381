// Glob patterns.
#pragma once

#include <string_view>
#include <vector>

namespace base {

// Whether the glob matches the whole text: * stands for any characters, ? for any one byte.
inline bool matchesGlob(std::string_view text, std::string_view glob) {
    size_t at = 0;
    size_t in = 0;
    size_t behindStar = std::string_view::npos;
    size_t retry = 0;  // where the text continues if the last star takes one byte more
    while (at < text.size()) {
        if (in < glob.size() && glob[in] == '*') {
            behindStar = ++in;
            retry = at;
        } else if (in < glob.size() && (glob[in] == '?' || glob[in] == text[at])) {
            ++in;
            ++at;
        } else if (behindStar != std::string_view::npos) {
            in = behindStar;
            at = ++retry;
        } else {
            return false;
        }
    }
    return glob.find_first_not_of('*', in) == std::string_view::npos;
}

// Whether there is a text that both globs match.
inline bool globsMeet(std::string_view one, std::string_view other) {
    if (one.find_first_of("*?") == std::string_view::npos) {
        return matchesGlob(one, other);
    }
    // reached[n]: what is read of `one` and the first n bytes of `other` can stand for the same.
    std::vector<bool> reached(other.size() + 1);
    reached[0] = true;
    const auto skipStars = [&] {
        for (size_t n = 0; n < other.size(); ++n) {
            reached[n + 1] = reached[n + 1] || (reached[n] && other[n] == '*');
        }
    };
    skipStars();
    for (const char each : one) {
        const std::vector<bool> before = reached;
        for (size_t n = 0; n < reached.size(); ++n) {
            const bool isStarred = n < other.size() && other[n] == '*' && before[n];
            const bool isSame = n > 0 && before[n - 1] && other[n - 1] != '*' &&
                                (each == '?' || other[n - 1] == '?' || each == other[n - 1]);
            const bool isEaten = each == '*' && (before[n] || (n > 0 && reached[n - 1]));
            reached[n] = each == '*' ? isEaten : isStarred || isSame;
        }
        skipStars();
    }
    return reached[other.size()];
}

}  // namespace base
