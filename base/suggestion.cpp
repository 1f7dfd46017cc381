#include "base/suggestion.h"

#include <algorithm>

namespace base {
namespace {

// No name is that long, and the time to compare grows with the square of the length.
constexpr size_t kLongestWord = 64;

// How many typing errors a word may contain: one; two from seven letters on; three from eleven on.
size_t mostMistakes(std::string_view word) {
    return std::max<size_t>(1, (word.size() + 1) / 4);
}

// The edit distance: letters inserted, deleted, replaced, or swapped with their neighbour.
size_t distance(std::string_view left, std::string_view right) {
    using Row = std::vector<size_t>;
    std::vector<Row> between(left.size() + 1, Row(right.size() + 1));  // so many letters of each
    for (size_t i = 0; i <= left.size(); ++i) {
        for (size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                between[i][j] = i + j;
                continue;
            }
            const size_t replaced = between[i - 1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            between[i][j] = std::min({between[i - 1][j] + 1, between[i][j - 1] + 1, replaced});
            const bool isSwapped =
                i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
            if (isSwapped) {
                between[i][j] = std::min(between[i][j], between[i - 2][j - 2] + 1);
            }
        }
    }
    return between.back().back();
}

}  // namespace

std::string suggestion(std::string_view word, const std::vector<std::string>& names) {
    if (word.size() > kLongestWord) {
        return {};
    }
    size_t least = mostMistakes(word) + 1;
    const std::string* nearest = nullptr;
    for (const std::string& name : names) {
        // The difference in length alone makes too many mistakes.
        if (std::max(word.size(), name.size()) - std::min(word.size(), name.size()) >= least) {
            continue;
        }
        const size_t mistakes = distance(word, name);
        // Two words without a common letter are not near, however short they are.
        if (mistakes < least && mistakes < std::max(word.size(), name.size())) {
            least = mistakes;
            nearest = &name;
        }
    }
    return nearest == nullptr ? std::string() : "; did you mean \"" + *nearest + "\"?";
}

}  // namespace base
