// The words of a command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/number.h"
#include "platform/visibility.h"

namespace tavsim {

// Takes the next word, and the blanks behind it, off the front of the text; empty at the end.
// Blanks in a quoted part do not end a word; it begins with the word, or behind its first '='.
std::string_view takeWord(std::string_view* text);

// What the word says: itself, or what a word in quotes has in them, with JSON's escapes. Nothing
// when it begins with a quote and is no JSON string.
std::optional<std::string> contentOf(std::string_view word);

// Takes one word after the other off the front of a line. Words have blanks between them; the last
// thing asked for can be all that is left, as it stands. The line must outlive it.
class TAV_PLATFORM_API Words {
public:
    explicit Words(std::string_view line);

    // The words of a temporary string would dangle.
    explicit Words(std::string&&) = delete;

    bool isEmpty() const { return m_rest.empty(); }

    // The next word; empty at the end.
    std::string_view next();

    std::string_view rest() const { return m_rest; }

    // Whether the next words are these numbers, each of which fits its type.
    template <typename... Numbers>
    bool takeNumbers(Numbers*... numbers) {
        return (nextNumber(numbers) && ...);
    }

    // Whether they are all that is left.
    template <typename... Numbers>
    bool areNumbers(Numbers*... numbers) {
        return takeNumbers(numbers...) && isEmpty();
    }

    // What is left but for a number at the end of it, which is optional and is taken into `number`.
    template <typename Number>
    std::string_view restBeforeNumber(Number* number) const {
        const size_t blank = m_rest.find_last_of(' ');
        if (blank == std::string_view::npos || !Words(m_rest.substr(blank)).areNumbers(number)) {
            return m_rest;
        }
        return m_rest.substr(0, m_rest.find_last_not_of(' ', blank) + 1);
    }

private:
    template <typename Number>
    bool nextNumber(Number* number) {
        const std::optional<Number> read = base::numberIn<Number>(next());
        *number = read.value_or(*number);
        return read.has_value();
    }

    std::string_view m_rest;
};

}  // namespace tavsim
