#include "simulator/control/pattern.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/json/text.h"
#include "base/json/writer.h"
#include "simulator/control/text_word.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

struct Unit {
    std::string_view name;
    double milliseconds;
};

constexpr Unit kUnits[] = {{"ms", 1}, {"s", 1000}, {"min", 60000}};
constexpr double kLongest = std::numeric_limits<std::uint32_t>::max();
constexpr char kWithin[] = "within";

std::optional<MemberPattern> readMember(std::string_view word, std::string* error) {
    const size_t equals = word.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        *error = base::quoted(word) + " is not MEMBER=GLOB";
        return std::nullopt;
    }
    const std::optional<std::string> glob = contentOf(word.substr(equals + 1));
    if (!glob) {
        *error = base::quoted(word) + ": what begins with a quote must be a JSON string";
        return std::nullopt;
    }
    return MemberPattern{std::string(word.substr(0, equals)), *glob};
}

bool hasMember(const dom::object& entry, const MemberPattern& pattern) {
    dom::element value;
    return entry.at_key(pattern.member).get(value) == simdjson::SUCCESS &&
           matchesGlob(base::textOf(value), pattern.glob);
}

}  // namespace

std::optional<Milliseconds> readTime(std::string_view word) {
    double number = 0;
    const char* const end = word.data() + word.size();
    const auto [at, problem] = std::from_chars(word.data(), end, number, std::chars_format::fixed);
    const std::string_view name = word.substr(static_cast<size_t>(at - word.data()));
    const Unit* unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                    [name](const Unit& one) { return one.name == name; });
    if (problem != std::errc() || unit == std::end(kUnits) || std::signbit(number)) {
        return std::nullopt;
    }
    const double time = std::round(number * unit->milliseconds);
    return time <= kLongest ? std::optional(static_cast<Milliseconds>(time)) : std::nullopt;
}

bool matches(std::string_view entry, const Pattern& pattern) {
    dom::parser parser;
    dom::object object;
    return parser.parse(entry.data(), entry.size()).get(object) == simdjson::SUCCESS &&
           std::all_of(pattern.begin(), pattern.end(),
                       [&](const MemberPattern& member) { return hasMember(object, member); });
}

std::optional<Awaited> readAwaited(std::string_view text, std::string* error) {
    Awaited awaited;
    std::string_view word = takeWord(&text);
    for (; !word.empty() && word != kWithin; word = takeWord(&text)) {
        std::optional<MemberPattern> member = readMember(word, error);
        if (!member) {
            return std::nullopt;
        }
        awaited.pattern.push_back(std::move(*member));
    }
    if (awaited.pattern.empty()) {
        *error = "what the entry has is missing: MEMBER=GLOB";
        return std::nullopt;
    }
    if (word == kWithin) {
        const std::string_view time = takeWord(&text);
        awaited.within = readTime(time);
        if (!awaited.within) {
            *error = base::quoted(time) + ": " + kTimeUsage;
            return std::nullopt;
        }
    }
    if (!text.empty()) {
        *error = base::quoted(text) + " stands behind the end";
        return std::nullopt;
    }
    return awaited;
}

}  // namespace tavsim
