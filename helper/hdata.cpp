#include "platform/hdata.h"

#include <cstring>
#include <new>

#include "helper/failing.h"
#include "helper/items.h"

struct HDataReader::Message {
    helper::ItemReader items;

    // Every read begins here, so that a fault can be injected into each of them.
    helper::ItemReader& next() {
        if (helper::fails(helper::Operation::Read)) {
            items.fail();
        }
        return items;
    }
};

struct HDataWriter::Message {
    helper::ItemWriter items;
};

HDataReader::HDataReader(const void* bytes, size_t size) noexcept
    : m_message(new Message{helper::ItemReader({static_cast<const char*>(bytes), size})}) {
}

HDataReader::~HDataReader() {
    delete m_message;
}

void HDataReader::readStr(char* buffer, int size) {
    const helper::Text text = m_message->next().readText();
    if (buffer == nullptr || size <= 0) {
        m_message->items.fail();
        return;
    }
    const std::string_view content = text.value_or(std::string_view());
    buffer[content.copy(buffer, static_cast<size_t>(size) - 1)] = '\0';
}

char* HDataReader::allocReadStr() {
    const helper::Text text = m_message->next().readText();
    if (!text) {
        return nullptr;
    }
    char* copy = new (std::nothrow) char[text->size() + 1];
    if (copy == nullptr) {
        m_message->items.fail();
        return nullptr;
    }
    copy[text->copy(copy, text->size())] = '\0';
    return copy;
}

int HDataReader::readInt() {
    return m_message->next().readInt();
}

bool HDataReader::readBool() {
    return m_message->next().readBool();
}

bool HDataReader::isSuccessful() const {
    return m_message->items.isSuccessful();
}

HDataWriter::HDataWriter() noexcept : m_message(new Message) {
}

HDataWriter::~HDataWriter() {
    delete m_message;
}

void HDataWriter::writeInt(int value) noexcept {
    m_message->items.writeInt(value);
}

void HDataWriter::writeBool(bool value) noexcept {
    m_message->items.writeBool(value);
}

void HDataWriter::writeStr(const char* text) noexcept {
    m_message->items.writeText(text != nullptr ? helper::Text(text) : std::nullopt);
}

const void* HDataWriter::bytes() const {
    return m_message->items.message().data();
}

size_t HDataWriter::size() const {
    return m_message->items.message().size();
}
