#include "simulator/page/conversation.h"

#include <glib.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/message_socket.h"
#include "helper/items.h"

namespace tavsim {
namespace {

// The number of each question, because a script asks one at a time.
constexpr int kOnlyQuestion = 0;

// The engine stores a character above U+FFFF as two surrogates of three bytes each.
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

// From UTF-8. An invalid byte becomes U+FFFD.
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

// To UTF-8. A surrogate without its partner becomes U+FFFD.
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

struct Conversation {
    base::MessageSocket device{kDeviceSocket};
    bridge::MessageKind kind = bridge::MessageKind::Idle;
    helper::ItemWriter written;
    base::Message received;
    helper::ItemReader unread{{}};
    std::string text;
};

Conversation& conversation() {
    // Never destroyed, because the process ends without running destructors.
    static Conversation& instance = *new Conversation;
    return instance;
}

[[noreturn]] void endWithoutDevice() {
    _exit(EXIT_SUCCESS);
}

}  // namespace

void beginMessage(bridge::MessageKind kind) {
    conversation().kind = kind;
    conversation().written = {};
}

void beginQuestion(bridge::MessageKind kind) {
    beginMessage(kind);
    addInt(kOnlyQuestion);
}

void addInt(int value) {
    conversation().written.writeInt(value);
}

void addText(EngineText text) {
    if (text.bytes == nullptr) {
        conversation().written.writeText(std::nullopt);
        return;
    }
    conversation().written.writeText(fromEngineText({text.bytes, text.length}));
}

void sendMessage() {
    const auto kind = static_cast<uint8_t>(conversation().kind);
    if (!conversation().device.send(kind, conversation().written.message())) {
        endWithoutDevice();
    }
}

bridge::MessageKind receiveMessage() {
    std::optional<base::Message> message = conversation().device.receive();
    if (!message) {
        endWithoutDevice();
    }
    conversation().received = *std::move(message);
    conversation().unread = helper::ItemReader(conversation().received.content);
    return static_cast<bridge::MessageKind>(conversation().received.kind);
}

void askDevice() {
    sendMessage();
    receiveMessage();
    readInt();
}

bool readBool() {
    return conversation().unread.readBool();
}

int readInt() {
    return conversation().unread.readInt();
}

EngineText readText() {
    const helper::Text text = conversation().unread.readText();
    if (!text) {
        return {nullptr, 0};
    }
    conversation().text = toEngineText(*text);
    return {conversation().text.data(), conversation().text.size()};
}

bool hasReadFailed() {
    return !conversation().unread.isSuccessful();
}

}  // namespace tavsim
