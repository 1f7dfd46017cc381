#include "simulator/page/conversation.h"

#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include "base/message_socket.h"
#include "helper/items.h"
#include "simulator/page/engine_text.h"

namespace tavsim {

namespace {

struct Conversation {
    base::MessageSocket device{kPageSocket};
    PageMessageKind kind = PageMessageKind::Idle;
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

void beginMessage(PageMessageKind kind) {
    conversation().kind = kind;
    conversation().written = {};
}

void addBool(bool value) {
    conversation().written.writeBool(value);
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

PageMessageKind receiveMessage() {
    std::optional<base::Message> message = conversation().device.receive();
    if (!message) {
        endWithoutDevice();
    }
    conversation().received = *std::move(message);
    conversation().unread = helper::ItemReader(conversation().received.content);
    return static_cast<PageMessageKind>(conversation().received.kind);
}

void askDevice() {
    sendMessage();
    receiveMessage();
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
