// Words that can hold blanks, because they are written in double quotes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavsim {

// Takes the next word, and the blanks behind it, off the front of the text; empty at the end.
// Blanks in a quoted part do not end a word; it begins with the word, or behind its first '='.
std::string_view takeWord(std::string_view* text);

// What the word says: itself, or what a word in quotes has in them, with JSON's escapes. Nothing
// when it begins with a quote and is no JSON string.
std::optional<std::string> contentOf(std::string_view word);

}  // namespace tavsim
