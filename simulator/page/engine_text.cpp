#include "simulator/page/engine_text.h"

#include <glib.h>

namespace tavsim {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kHighSurrogates = 0xD800;
constexpr char32_t kLowSurrogates = 0xDC00;
constexpr char32_t kEndOfSurrogates = 0xE000;
constexpr char32_t kBeyondBasic = 0x10000;
constexpr char32_t kEndOfUnicode = 0x110000;

bool isBetween(char32_t value, char32_t first, char32_t end) {
    return value >= first && value < end;
}

// The first code point, surrogates included, and its number of bytes; U+FFFD with one byte when the
// sequence is invalid.
struct Decoded {
    char32_t value;
    size_t length;
};

// GLib takes no surrogates, and a zero only for the end.
Decoded decode(std::string_view text) {
    const auto byte = [&](size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
    };
    if (byte(0) < 0x80) {
        return {byte(0), 1};
    }
    if (byte(0) == 0xED && isBetween(byte(1), 0xA0, 0xC0) && isBetween(byte(2), 0x80, 0xC0)) {
        return {0xD000 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F), 3};
    }
    const gunichar value = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (value >= kEndOfUnicode) {
        return {kReplacement, 1};
    }
    return {value, static_cast<size_t>(g_unichar_to_utf8(value, nullptr))};
}

void append(std::string* text, char32_t value) {
    char bytes[6];
    const int length = g_unichar_to_utf8(value, bytes);
    text->append(bytes, static_cast<size_t>(length));
}

}  // namespace

std::string toEngineText(std::string_view utf8) {
    std::string text;
    while (!utf8.empty()) {
        const Decoded decoded = decode(utf8);
        if (isBetween(decoded.value, kHighSurrogates, kEndOfSurrogates)) {
            append(&text, kReplacement);
            utf8.remove_prefix(1);
            continue;
        }
        if (decoded.value >= kBeyondBasic) {
            const char32_t bits = decoded.value - kBeyondBasic;
            append(&text, kHighSurrogates + (bits >> 10));
            append(&text, kLowSurrogates + (bits & 0x3FF));
        } else {
            append(&text, decoded.value);
        }
        utf8.remove_prefix(decoded.length);
    }
    return text;
}

std::string fromEngineText(std::string_view engineText) {
    std::string text;
    while (!engineText.empty()) {
        const Decoded first = decode(engineText);
        engineText.remove_prefix(first.length);
        if (!isBetween(first.value, kHighSurrogates, kEndOfSurrogates)) {
            append(&text, first.value);
            continue;
        }
        const Decoded second = engineText.empty() ? Decoded{kReplacement, 0} : decode(engineText);
        if (first.value >= kLowSurrogates ||
            !isBetween(second.value, kLowSurrogates, kEndOfSurrogates)) {
            append(&text, kReplacement);
            continue;
        }
        append(&text, kBeyondBasic + ((first.value - kHighSurrogates) << 10) +
                          (second.value - kLowSurrogates));
        engineText.remove_prefix(second.length);
    }
    return text;
}

}  // namespace tavsim
