#include "simulator/language/words.h"

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

void skipBlanks(std::string_view* text) {
    text->remove_prefix(std::min(text->find_first_not_of(' '), text->size()));
}

}  // namespace

Words::Words(std::string_view line) : m_rest(line) {
    skipBlanks(&m_rest);
}

std::string_view Words::next() {
    const std::string_view word = m_rest.substr(0, m_rest.find(' '));
    m_rest.remove_prefix(word.size());
    skipBlanks(&m_rest);
    return word;
}

std::string_view takeWord(std::string_view* text) {
    const std::string_view word = text->substr(0, lengthOfWord(*text));
    text->remove_prefix(word.size());
    skipBlanks(text);
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
