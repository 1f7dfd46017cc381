// The page's side of the bridge: messages to the library, and its answers.
#ifndef TAV_TESTS_BRIDGE_H
#define TAV_TESTS_BRIDGE_H

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "js/handlers.h"

namespace tavtest {

// Whether the answer is an exception, and its text; nothing when the message could not be read.
using Answer = std::optional<std::pair<bool, std::string>>;

inline Answer result(const std::string& text) {
    return {{false, text}};
}

inline Answer exception(const std::string& text) {
    return {{true, text}};
}

inline std::string readText(HDataReader& reader) {
    const std::unique_ptr<char[]> text(reader.allocReadStr());
    return reader.isSuccessful() && text != nullptr ? text.get() : "(null)";
}

inline std::string callMessage(const std::string& name, int count,
                               const std::vector<const char*>& parameters) {
    HDataWriter writer;
    writer.writeStr(name.c_str());
    writer.writeInt(count);
    for (const char* parameter : parameters) {
        writer.writeStr(parameter);
    }
    return {static_cast<const char*>(writer.bytes()), writer.size()};
}

inline Answer sendMessage(const std::string& message) {
    HDataReader reader(message.data(), message.size());
    HDataWriter writer;
    if (!tav::jsMethodCallback(&reader, &writer)) {
        EXPECT_EQ(writer.size(), HDataWriter().size());
        return std::nullopt;
    }
    HDataReader answer(writer.bytes(), writer.size());
    const bool isException = answer.readBool();
    return {{isException, readText(answer)}};
}

inline Answer callMethod(const std::string& name, int count = 0,
                         const std::vector<const char*>& parameters = {}) {
    return sendMessage(callMessage(name, count, parameters));
}

inline std::vector<std::string> methodNames() {
    HDataWriter writer;
    EXPECT_TRUE(tav::jsGetMethodsCallback(&writer));
    HDataReader reader(writer.bytes(), writer.size());
    std::vector<std::string> names;
    for (int left = reader.readInt(); left > 0; --left) {
        names.push_back(readText(reader));
    }
    return names;
}

}  // namespace tavtest

#endif
