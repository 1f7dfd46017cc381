// Reading numbers.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <type_traits>

namespace base {

// The number that is the whole text, finite and of a value that its type has; nothing for any other
// text.
template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [at, problem] = std::from_chars(text.data(), end, number);
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) {
            return std::nullopt;
        }
    }
    return problem == std::errc() && at == end ? std::optional(number) : std::nullopt;
}

}  // namespace base
