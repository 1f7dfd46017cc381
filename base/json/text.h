// The textual form of JSON values.
#ifndef TAV_BASE_JSON_TEXT_H
#define TAV_BASE_JSON_TEXT_H

#include <simdjson.h>

#include <string>

#include "base/json/writer.h"

namespace base {

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

}  // namespace base

#endif
