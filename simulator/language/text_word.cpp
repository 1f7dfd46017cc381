#include "simulator/language/text_word.h"

#include <simdjson.h>

#include <algorithm>

namespace tavsim {
namespace {

// Behind the quote that ends the string which begins at `start`, or the text's end.
size_t endOfString(std::string_view text, size_t start) {
    for (size_t at = start + 1; at < text.size(); ++at) {
        if (text[at] == '\\') {
            ++at;
        } else if (text[at] == '"') {
            return at + 1;
        }
    }
    return text.size();
}

size_t lengthOfWord(std::string_view text) {
    const size_t behindEquals = text.find_first_of("= ") + 1;  // 0 without any
    const bool hasMember = behindEquals > 0 && text[behindEquals - 1] == '=';
    const size_t quote = hasMember ? behindEquals : 0;
    const bool isQuoted = quote < text.size() && text[quote] == '"';
    const size_t end = isQuoted ? endOfString(text, quote) : quote;
    return std::min(text.find(' ', end), text.size());
}

}  // namespace

std::string_view takeWord(std::string_view* text) {
    const std::string_view word = text->substr(0, lengthOfWord(*text));
    text->remove_prefix(word.size());
    text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
    return word;
}

std::optional<std::string> contentOf(std::string_view word) {
    if (!word.starts_with('"')) {
        return std::string(word);
    }
    simdjson::dom::parser parser;
    std::string_view content;
    const bool isString = parser.parse(word.data(), word.size()).get(content) == simdjson::SUCCESS;
    return isString ? std::optional<std::string>(content) : std::nullopt;
}

}  // namespace tavsim
