#include "base/json/writer.h"

#include <glib.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>

namespace base {
namespace {

constexpr size_t kMostShown = 200;  // bytes

bool isPlain(std::string_view text) {
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte >= 0x7f || c == '"' || c == '\\') {
            return false;
        }
    }
    return true;
}

void appendEscaped(std::string& out, std::string_view text) {
    if (isPlain(text)) {
        out += text;
        return;
    }
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    for (const char* at = valid.get(); *at != '\0'; ++at) {
        const unsigned char c = static_cast<unsigned char>(*at);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += *at;
        } else if (c < ' ' || c == 0x7f) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", c);
            out += code;
        } else {
            out += *at;
        }
    }
}

}  // namespace

std::string escapedJson(std::string_view text) {
    std::string out;
    appendEscaped(out, text);
    return out;
}

std::string shortened(std::string_view text) {
    if (text.size() <= kMostShown) {
        return std::string(text);
    }
    // A UTF-8 character is not split.
    const auto isWithin = [&](size_t at) { return (text[at] & 0xC0) == 0x80; };
    size_t end = kMostShown / 2;
    size_t start = text.size() - kMostShown / 2;
    for (size_t bytes = 0; bytes < 3; ++bytes) {
        end -= isWithin(end) ? 1 : 0;
        start += isWithin(start) ? 1 : 0;
    }
    return std::string(text.substr(0, end)) + "…" + std::string(text.substr(start));
}

std::string quoted(std::string_view text) {
    return "\"" + escapedJson(shortened(text)) + "\"";
}

JsonWriter& JsonWriter::key(std::string_view name) {
    value(name);
    m_text += ':';
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view text) {
    separate();
    m_text += '"';
    appendEscaped(m_text, text);
    m_text += '"';
    return *this;
}

JsonWriter& JsonWriter::value(const char* text) {
    return text != nullptr ? value(std::string_view(text)) : raw("null");
}

JsonWriter& JsonWriter::value(bool flag) {
    return raw(flag ? "true" : "false");
}

JsonWriter& JsonWriter::value(double number) {
    if (!std::isfinite(number)) {
        return raw("null");
    }
    char digits[32];
    const auto [end, problem] = std::to_chars(std::begin(digits), std::end(digits), number);
    return raw({digits, end});
}

JsonWriter& JsonWriter::raw(std::string_view json) {
    separate();
    m_text += json;
    return *this;
}

JsonWriter& JsonWriter::open(char bracket) {
    separate();
    m_text += bracket;
    return *this;
}

JsonWriter& JsonWriter::close(char bracket) {
    m_text += bracket;
    return *this;
}

// A comma is due behind a value, which never ends with one of these.
void JsonWriter::separate() {
    if (!m_text.empty() && std::string_view("{[:").find(m_text.back()) == std::string_view::npos) {
        m_text += ',';
    }
}

}  // namespace base
