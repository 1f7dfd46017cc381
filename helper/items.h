// The typed items of a message: the encoding of HDataReader and HDataWriter, which the simulator's
// own processes use as well.
//
// An item is a tag byte and its value in the machine's byte order: 'i' and 4 bytes, 'b' and a byte
// that is 0 or 1, 's' with an 8-byte length and that many bytes without a NUL, 'n' alone for a null
// string.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace helper {

// A text, or null.
using Text = std::optional<std::string_view>;

// Reads items in the order in which they were written. The message is not trusted. After a failure
// every further read fails too. Texts are not copied: they point into the message.
class ItemReader {
public:
    explicit ItemReader(std::string_view message) : m_rest(message) {}

    int32_t readInt();         // 0 on failure
    bool readBool();           // false on failure
    Text readText();           // null on failure
    std::string readString();  // a copy of the text; empty for null and on failure

    std::string_view rest() const { return m_rest; }  // what is not read yet

    void fail() { m_successful = false; }
    bool isSuccessful() const { return m_successful; }

private:
    bool takeTag(char tag);
    bool take(void* value, size_t size);

    std::string_view m_rest;
    bool m_successful = true;
};

class ItemWriter {
public:
    void writeInt(int32_t value);
    void writeBool(bool value);
    void writeText(Text text);  // up to its first NUL byte

    const std::string& message() const { return m_message; }

private:
    std::string m_message;
};

}  // namespace helper
