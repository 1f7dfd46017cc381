// Parsing with a parser that is kept for the next text.
#ifndef TAV_BASE_JSON_PARSER_H
#define TAV_BASE_JSON_PARSER_H

#include <simdjson.h>

#include <string_view>

namespace base {

// False where the text is no JSON, or memory is exhausted. The parser then begins anew, as it would
// take what it got of its memory for all of it. The text is copied unless it has room behind its
// end for simdjson's padding.
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
