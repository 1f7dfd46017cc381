#include "helper/items.h"

#include <cstring>

namespace helper {
namespace {

constexpr char kInt = 'i';
constexpr char kBool = 'b';
constexpr char kText = 's';
constexpr char kNullText = 'n';

template <typename Value>
void append(std::string* message, char tag, Value value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    message->push_back(tag);
    message->append(bytes, sizeof bytes);
}

}  // namespace

bool ItemReader::takeTag(char tag) {
    if (!m_successful || m_rest.empty() || m_rest.front() != tag) {
        return false;
    }
    m_rest.remove_prefix(1);
    return true;
}

bool ItemReader::take(void* value, size_t size) {
    if (m_rest.size() < size) {
        return false;
    }
    std::memcpy(value, m_rest.data(), size);
    m_rest.remove_prefix(size);
    return true;
}

int32_t ItemReader::readInt() {
    int32_t value = 0;
    if (!takeTag(kInt) || !take(&value, sizeof value)) {
        fail();
        return 0;
    }
    return value;
}

bool ItemReader::readBool() {
    uint8_t value = 0;
    if (!takeTag(kBool) || !take(&value, sizeof value) || value > 1) {
        fail();
        return false;
    }
    return value == 1;
}

Text ItemReader::readText() {
    if (takeTag(kNullText)) {
        return std::nullopt;
    }
    uint64_t length = 0;
    if (!takeTag(kText) || !take(&length, sizeof length) || length > m_rest.size()) {
        fail();
        return std::nullopt;
    }
    const std::string_view text = m_rest.substr(0, static_cast<size_t>(length));
    if (text.find('\0') != std::string_view::npos) {
        fail();
        return std::nullopt;
    }
    m_rest.remove_prefix(text.size());
    return text;
}

std::string ItemReader::readString() {
    return std::string(readText().value_or(std::string_view()));
}

void ItemWriter::writeInt(int32_t value) {
    append(&m_message, kInt, value);
}

void ItemWriter::writeBool(bool value) {
    append(&m_message, kBool, static_cast<uint8_t>(value));
}

void ItemWriter::writeText(Text text) {
    if (!text) {
        m_message.push_back(kNullText);
        return;
    }
    const std::string_view content = text->substr(0, text->find('\0'));
    append(&m_message, kText, uint64_t{content.size()});
    m_message.append(content);
}

}  // namespace helper
