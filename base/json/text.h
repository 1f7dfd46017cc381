// Reading single JSON texts and their values.
#pragma once

#include <simdjson.h>

#include <optional>
#include <string>

#include "base/json/writer.h"

namespace base {

// Parses with a parser that is reused for many texts. False when the text is not JSON, or memory is
// exhausted. In the latter case the parser is replaced by a new one, because it would believe that
// it got all of its memory. A text without simdjson's padding after its end is copied.
inline bool parse(simdjson::dom::parser& parser, std::string_view text, bool isPadded,
                  simdjson::dom::element* root) {
    const auto error = parser.parse(text.data(), text.size(), !isPadded).get(*root);
    if (error == simdjson::MEMALLOC) {
        parser = simdjson::dom::parser();
    }
    return error == simdjson::SUCCESS;
}

// Two parsers, for a text and one inside of it, that work even when static objects have been
// destroyed, if they have been used before. simdjson makes no new parsers then.
inline simdjson::dom::parser& lastingParser(bool isForInside) {
    static auto* const parsers = new simdjson::dom::parser[2];
    return parsers[isForInside ? 1 : 0];
}

// To be called before the process ends where they are needed then.
inline void prepareLastingParsers() {
    for (const bool isForInside : {false, true}) {
        simdjson::dom::element root;
        parse(lastingParser(isForInside), "0", false, &root);
    }
}

// The content of a string, the JSON text of any other value.
inline std::string textOf(simdjson::dom::element value) {
    std::string_view content;
    if (value.get(content) == simdjson::SUCCESS) {
        return std::string(content);
    }
    return simdjson::minify(value);
}

// The same, with one form for equal numbers.
inline std::string comparableText(simdjson::dom::element value) {
    double number = 0;
    const bool isNumber = value.get(number) == simdjson::SUCCESS;
    return isNumber ? JsonWriter().value(number).take() : textOf(value);
}

// A member of an object that is not trusted; nothing when it is missing or of another type.
template <typename Value>
std::optional<Value> memberOf(const simdjson::dom::object& object, std::string_view name) {
    Value value{};
    return object[name].get(value) == simdjson::SUCCESS ? std::optional(value) : std::nullopt;
}

// The same for a text, which is empty, and a flag, which is false, when it is missing.
inline std::string textMember(const simdjson::dom::object& object, std::string_view name) {
    return std::string(memberOf<std::string_view>(object, name).value_or(""));
}
inline bool flagMember(const simdjson::dom::object& object, std::string_view name) {
    return memberOf<bool>(object, name).value_or(false);
}

}  // namespace base
