#include "simulator/language/pattern.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/json/path.h"
#include "base/json/text.h"
#include "base/json/writer.h"
#include "simulator/language/usage.h"
#include "simulator/language/vocabulary.h"

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
constexpr char kNear[] = "near";
constexpr char kCount[] = "count";
constexpr char kReply[] = "reply";
constexpr char kNearUsage[] = "near is followed by LAT,LON METRESm, such as near 52.5,13.4 25m";
constexpr size_t kMostConditions = 32;

struct Sign {
    std::string_view text;
    Comparison comparison;
};

// A sign stands before those that it begins with.
constexpr Sign kSigns[] = {{"<=", Comparison::UpTo},
                           {">=", Comparison::From},
                           {"<", Comparison::Below},
                           {">", Comparison::Above},
                           {"=", Comparison::Like}};

const Sign* signAt(std::string_view text) {
    const auto* found = std::find_if(std::begin(kSigns), std::end(kSigns), [text](const Sign& one) {
        return text.starts_with(one.text);
    });
    return found != std::end(kSigns) ? found : nullptr;
}

// Whether names and indexes follow each other: items[0].price, or items.0.price.
bool isPath(std::string_view path) {
    bool isName = true;  // what comes now
    while (true) {
        if (isName) {
            const size_t end = std::min(path.find_first_of(".[]"), path.size());
            if (end == 0) {
                return false;
            }
            path.remove_prefix(end);
        }
        if (path.empty()) {
            return true;
        }
        isName = path[0] == '.';
        const size_t end = isName ? 0 : path.find_first_not_of("0123456789", 1);
        const bool isIndex = path[0] == '[' && end > 1 && end < path.size() && path[end] == ']';
        if (!isName && !isIndex) {
            return false;
        }
        path.remove_prefix(end + 1);
    }
}

std::optional<MemberPattern> readCondition(std::string_view word, std::string* error) {
    const size_t at = word.find_first_of("<>=");
    if (at == std::string_view::npos || at == 0) {
        *error = base::quoted(word) + " is not MEMBER=GLOB";
        return std::nullopt;
    }
    const Sign sign = *signAt(word.substr(at));
    const std::string_view value = word.substr(at + sign.text.size());
    const std::optional<std::string> glob = contentOf(value);
    if (!glob) {
        *error = base::quoted(word) + ": what begins with a quote must be a JSON string";
        return std::nullopt;
    }
    MemberPattern condition{std::string(word.substr(0, at)), *glob, sign.comparison};
    if (!isPath(condition.member)) {
        *error = base::quoted(condition.member) +
                 " is no member, nor a path to a value, such as payload.items[0].price";
        return std::nullopt;
    }
    if (sign.comparison != Comparison::Like && !Words(value).areNumbers(&condition.number)) {
        *error = base::quoted(word) + ": a number must follow the " + std::string(sign.text);
        return std::nullopt;
    }
    return condition;
}

std::optional<MemberPattern> readNear(std::string_view* text, std::string* error) {
    const std::string_view place = takeWord(text);
    const std::string_view distance = takeWord(text);
    const std::string words = std::string(place).append(" ").append(distance);
    std::string problem;
    if (!fitsUsage("LAT,LON METRESm", Words(words), &problem)) {
        *error = problem.empty() ? kNearUsage : std::string(kNear) + ": " + problem;
        return std::nullopt;
    }
    return MemberPattern{kReply, words, Comparison::Near, readMetres(distance), readPlace(place)};
}

std::optional<dom::element> parsed(std::string_view text, bool isInside) {
    dom::element root;
    const bool isJson = base::parse(base::lastingParser(isInside), text, false, &root);
    return isJson ? std::optional(root) : std::nullopt;
}

std::optional<dom::element> inside(dom::element value) {
    std::string_view text;
    return value.get(text) == simdjson::SUCCESS ? parsed(std::string(text), true)
                                                : std::optional(value);
}

// A reply that is a fix has the fix's members too.
std::optional<dom::element> findMember(dom::element entry, std::string_view name) {
    dom::element member;
    if (entry.at_key(name).get(member) == simdjson::SUCCESS) {
        return member;
    }
    const bool hasReply = entry.at_key(kReply).get(member) == simdjson::SUCCESS;
    const std::optional<dom::element> fix = hasReply ? inside(member) : std::nullopt;
    return fix ? base::valueAt(*fix, name) : std::nullopt;
}

std::optional<std::string> valueOf(dom::element entry, const MemberPattern& condition) {
    const std::string_view top = topOf(condition.member);
    std::optional<dom::element> value = findMember(entry, top);
    if (value && top.size() < condition.member.size()) {
        std::string_view path = std::string_view(condition.member).substr(top.size());
        path.remove_prefix(path[0] == '.' ? 1 : 0);
        value = inside(*value);
        value = value ? base::valueAt(*value, path) : std::nullopt;
    }
    return value ? std::optional(base::textOf(*value)) : std::nullopt;
}

bool isNear(std::string_view text, const MemberPattern& condition) {
    const std::optional<dom::element> fix = parsed(text, true);
    Place place;
    return fix && fix->at_key("latitude").get(place.latitude) == simdjson::SUCCESS &&
           fix->at_key("longitude").get(place.longitude) == simdjson::SUCCESS &&
           distanceBetween(place, condition.place) <= condition.number;
}

}  // namespace

std::optional<Milliseconds> readTime(std::string_view word) {
    double number = 0;
    const char* const end = word.data() + word.size();
    const auto [at, problem] = std::from_chars(word.data(), end, number, std::chars_format::fixed);
    const std::string_view name = word.substr(static_cast<size_t>(at - word.data()));
    const Unit* unit = std::ranges::find(kUnits, name, &Unit::name);
    if (problem != std::errc() || unit == std::end(kUnits) || std::signbit(number)) {
        return std::nullopt;
    }
    const double time = std::round(number * unit->milliseconds);
    return time <= kLongest ? std::optional(static_cast<Milliseconds>(time)) : std::nullopt;
}

Place readPlace(std::string_view word) {
    const size_t comma = word.find(',');
    Place place;
    Words(word.substr(0, comma)).takeNumbers(&place.latitude);
    Words(word.substr(comma + 1)).takeNumbers(&place.longitude);
    return place;
}

double readMetres(std::string_view word) {
    double metres = 0;
    Words(word.substr(0, word.find('m'))).takeNumbers(&metres);
    return metres;
}

std::string_view topOf(std::string_view path) {
    return path.substr(0, path.find_first_of(".["));
}

bool matches(std::string_view entry, const Pattern& pattern) {
    const std::optional<dom::element> root = parsed(entry, false);
    return root && root->is_object() &&
           std::all_of(pattern.begin(), pattern.end(), [&](const MemberPattern& condition) {
               const std::optional<std::string> value = valueOf(*root, condition);
               return value && meets(*value, condition);
           });
}

std::optional<std::string> valueIn(std::string_view entry, const MemberPattern& condition) {
    const std::optional<dom::element> root = parsed(entry, false);
    return root ? valueOf(*root, condition) : std::nullopt;
}

bool meets(std::string_view value, const MemberPattern& condition) {
    if (condition.comparison == Comparison::Like) {
        return matchesGlob(value, condition.glob);
    }
    if (condition.comparison == Comparison::Near) {
        return isNear(value, condition);
    }
    double number = 0;
    if (!Words(value).areNumbers(&number)) {
        return false;
    }
    switch (condition.comparison) {
    case Comparison::Below:
        return number < condition.number;
    case Comparison::UpTo:
        return number <= condition.number;
    case Comparison::Above:
        return number > condition.number;
    default:
        return number >= condition.number;
    }
}

std::string textOf(const MemberPattern& condition) {
    if (condition.comparison == Comparison::Near) {
        return std::string(kNear) + " " + condition.glob;
    }
    const Sign* sign = std::ranges::find(kSigns, condition.comparison, &Sign::comparison);
    return condition.member + std::string(sign->text) + condition.glob;
}

std::optional<Awaited> readAwaited(std::string_view text, std::string* error) {
    Awaited awaited;
    std::string_view word = takeWord(&text);
    for (; !word.empty() && word != kWithin; word = takeWord(&text)) {
        std::optional<MemberPattern> condition =
            word == kNear ? readNear(&text, error) : readCondition(word, error);
        if (!condition) {
            return std::nullopt;
        }
        if (condition->member == kCount) {
            awaited.count = std::move(condition);
        } else if (awaited.pattern.size() == kMostConditions) {
            *error = "more than " + std::to_string(kMostConditions) + " conditions";
            return std::nullopt;
        } else {
            awaited.pattern.push_back(std::move(*condition));
        }
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
    *error = whyNoEntry(awaited.pattern);
    return error->empty() ? std::optional(std::move(awaited)) : std::nullopt;
}

std::optional<Pattern> readPattern(std::string_view text, std::string* error) {
    std::optional<Awaited> awaited = readAwaited(text, error);
    if (!awaited) {
        return std::nullopt;
    }
    if (awaited->within || awaited->count) {
        *error = std::string(awaited->within ? kWithin : kCount) + " has no meaning here";
        return std::nullopt;
    }
    return std::move(awaited->pattern);
}

}  // namespace tavsim
