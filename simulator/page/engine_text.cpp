#include "simulator/page/engine_text.h"

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

// The length of a sequence with this lead byte, and the smallest value that needs it.
struct Sequence {
    size_t length;
    char32_t leadBits;
    char32_t smallest;
};

Sequence sequenceOf(unsigned char lead) {
    if (lead < 0x80) {
        return {1, lead, 0};
    }
    if (isBetween(lead, 0xC0, 0xE0)) {
        return {2, lead & 0x1Fu, 0x80};
    }
    if (isBetween(lead, 0xE0, 0xF0)) {
        return {3, lead & 0x0Fu, 0x800};
    }
    if (isBetween(lead, 0xF0, 0xF8)) {
        return {4, lead & 0x07u, kBeyondBasic};
    }
    return {0, 0, 0};
}

// The first code point, surrogates included, and its number of bytes; U+FFFD with one byte when the
// sequence is invalid.
struct Decoded {
    char32_t value;
    size_t length;
};

Decoded decode(std::string_view text) {
    constexpr Decoded invalid = {kReplacement, 1};
    const Sequence sequence = sequenceOf(static_cast<unsigned char>(text.front()));
    if (sequence.length == 0 || sequence.length > text.size()) {
        return invalid;
    }
    char32_t value = sequence.leadBits;
    for (const char byte : text.substr(1, sequence.length - 1)) {
        const auto bits = static_cast<unsigned char>(byte);
        if (!isBetween(bits, 0x80, 0xC0)) {
            return invalid;
        }
        value = (value << 6) | (bits & 0x3Fu);
    }
    return isBetween(value, sequence.smallest, kEndOfUnicode) ? Decoded{value, sequence.length}
                                                              : invalid;
}

void append(std::string* text, char32_t value) {
    const auto continuation = [&](int shift) {
        text->push_back(static_cast<char>(0x80 | ((value >> shift) & 0x3F)));
    };
    if (value < 0x80) {
        text->push_back(static_cast<char>(value));
    } else if (value < 0x800) {
        text->push_back(static_cast<char>(0xC0 | (value >> 6)));
        continuation(0);
    } else if (value < kBeyondBasic) {
        text->push_back(static_cast<char>(0xE0 | (value >> 12)));
        continuation(6);
        continuation(0);
    } else {
        text->push_back(static_cast<char>(0xF0 | (value >> 18)));
        continuation(12);
        continuation(6);
        continuation(0);
    }
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
