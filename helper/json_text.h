// The textual form of JSON values.
#ifndef TAV_HELPER_JSON_TEXT_H
#define TAV_HELPER_JSON_TEXT_H

#include <simdjson.h>

#include <string>

namespace helper {

// The content of a string, the JSON text of any other value.
inline std::string textOf(simdjson::dom::element value) {
    std::string_view content;
    if (value.get(content) == simdjson::SUCCESS) {
        return std::string(content);
    }
    return simdjson::minify(value);
}

}  // namespace helper

#endif
