// Parsing with a parser that is reused for many texts.
#ifndef TAV_BASE_JSON_PARSER_H
#define TAV_BASE_JSON_PARSER_H

#include <simdjson.h>

#include <string_view>

namespace base {

// False when the text is not JSON, or memory is exhausted. In the latter case the parser is
// replaced by a new one, because it would believe that it got all of its memory. A text without
// simdjson's padding after its end is copied.
inline bool parse(simdjson::dom::parser& parser, std::string_view text, bool isPadded,
                  simdjson::dom::element* root) {
    const auto error = parser.parse(text.data(), text.size(), !isPadded).get(*root);
    if (error == simdjson::MEMALLOC) {
        parser = simdjson::dom::parser();
    }
    return error == simdjson::SUCCESS;
}

}  // namespace base

#endif
