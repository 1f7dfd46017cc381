// Times, places, and patterns for entries of the journal, as written in commands and scenarios.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/glob.h"
#include "platform/visibility.h"
#include "simulator/time/clock.h"
#include "simulator/world/walk.h"

namespace tavsim {

// Reads a whole or decimal number with ms, s or min: 250ms, 1.5s, 2min. Nothing for any other text,
// or for more than SDL's clock can represent (49 days).
TAV_PLATFORM_API std::optional<Milliseconds> readTime(std::string_view word);
inline constexpr char kTimeUsage[] =
    "a time is a number with ms, s or min, such as 1.5s, of at most 49 days";

// LAT,LON and METRESm, of that form; 0 metres without a word.
Place readPlace(std::string_view word);
double readMetres(std::string_view word);

using base::matchesGlob;

enum class Comparison { Like, Below, UpTo, Above, From, Near };

// A condition for one member of an entry, or for a value inside of it: "payload.items[0].price". In
// a text a path leads into its JSON.
struct MemberPattern {
    std::string member;
    std::string glob;  // of a value that is not a string, of its JSON text; else as it is written
    Comparison comparison = Comparison::Like;
    double number = 0;  // to compare with; near: the distance in metres
    Place place = {};
};

// An entry must meet all of them.
using Pattern = std::vector<MemberPattern>;

// The member of the entry that a path begins with.
std::string_view topOf(std::string_view path);

// Those that a path leads into.
inline constexpr std::string_view kJsonMembers = "payload, reply, arguments";

// Whether the line, one JSON object, matches. Any other line does not.
TAV_PLATFORM_API bool matches(std::string_view entry, const Pattern& pattern);

// The value that the condition is about, as a text; nothing where the entry has none.
std::optional<std::string> valueIn(std::string_view entry, const MemberPattern& condition);

// Whether the value's text meets the condition.
TAV_PLATFORM_API bool meets(std::string_view value, const MemberPattern& condition);

// The condition as it is written.
std::string textOf(const MemberPattern& condition);

struct Awaited {
    Pattern pattern;
    std::optional<MemberPattern> count;  // of such entries
    std::optional<Milliseconds> within;
};

// Reads what is awaited: conditions, and `within TIME` at the end. A condition is MEMBER=GLOB,
// MEMBER<NUMBER, also with >, <= and >=, or `near LAT,LON METRESm`; `count=N` is about the number
// of entries. A glob with blanks is written in double quotes, with JSON's escapes. Nothing, with a
// line in `error`, for any other text, and where no entry can ever match.
TAV_PLATFORM_API std::optional<Awaited> readAwaited(std::string_view text, std::string* error);

// The same of conditions alone.
TAV_PLATFORM_API std::optional<Pattern> readPattern(std::string_view text, std::string* error);

}  // namespace tavsim
