// Paths to the values inside of a JSON value.
#pragma once

#include <simdjson.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace base {

// As of RFC 6901. An index is written as items[0] or items.0.
inline std::string jsonPointer(std::string_view path) {
    std::string pointer = path.starts_with('[') ? "" : "/";
    for (size_t at = 0; at < path.size(); ++at) {
        const size_t end = std::min(path.find_first_not_of("0123456789", at + 1), path.size() - 1);
        if (path[at] == '[' && end > at + 1 && path[end] == ']') {
            pointer.append("/").append(path.substr(at + 1, end - at - 1));
            at = end;
        } else {
            pointer += path[at] == '.'   ? "/"
                       : path[at] == '/' ? "~1"
                       : path[at] == '~' ? "~0"
                                         : std::string(1, path[at]);
        }
    }
    return pointer;
}

inline std::optional<simdjson::dom::element> valueAt(simdjson::dom::element root,
                                                     std::string_view path) {
    simdjson::dom::element found;
    return root.at_pointer(jsonPointer(path)).get(found) == simdjson::SUCCESS ? std::optional(found)
                                                                              : std::nullopt;
}

}  // namespace base
