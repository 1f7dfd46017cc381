// Durations, and patterns for entries of the journal, as written in commands and scenarios.
#ifndef TAV_SIMULATOR_CONTROL_PATTERN_H
#define TAV_SIMULATOR_CONTROL_PATTERN_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/glob.h"
#include "platform/visibility.h"
#include "simulator/time/clock.h"

namespace tavsim {

// Reads a whole or decimal number with ms, s or min: 250ms, 1.5s, 2min. Nothing for any other text,
// or for more than SDL's clock can represent (49 days).
TAV_PLATFORM_API std::optional<Milliseconds> readTime(std::string_view word);
inline constexpr char kTimeUsage[] =
    "a time is a number with ms, s or min, such as 1.5s, of at most 49 days";

using base::matchesGlob;

// A pattern for entries of the journal: an entry must have each of these members, with a value that
// the glob matches. Values that are not strings are matched as JSON text.
struct MemberPattern {
    std::string member;
    std::string glob;
};
using Pattern = std::vector<MemberPattern>;

// Whether the line, one JSON object, matches. Any other line does not.
TAV_PLATFORM_API bool matches(std::string_view entry, const Pattern& pattern);

struct Awaited {
    Pattern pattern;
    std::optional<Milliseconds> within;
};

// Reads MEMBER=GLOB… [within TIME]. A glob with blanks is written in double quotes, with JSON's
// escapes. Nothing, with a line in `error`, for any other text.
TAV_PLATFORM_API std::optional<Awaited> readAwaited(std::string_view text, std::string* error);

}  // namespace tavsim

#endif
