// Glob patterns.
#pragma once

#include <string_view>

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

}  // namespace base
