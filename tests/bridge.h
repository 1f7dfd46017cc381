// The page's side of the bridge: messages to the library, and its answers.
#pragma once

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

inline std::string readText(HDataReader& reader) {
    const std::unique_ptr<char[]> text(reader.allocReadStr());
    return reader.isSuccessful() && text != nullptr ? text.get() : "(null)";
}

inline Answer callMethod(const std::string& name, int count = 0,
                         const std::vector<const char*>& parameters = {}) {
    HDataWriter message;
    message.writeStr(name.c_str());
    message.writeInt(count);
    for (const char* parameter : parameters) {
        message.writeStr(parameter);
    }
    HDataReader reader(message.bytes(), message.size());
    HDataWriter writer;
    if (!tav::jsMethodCallback(&reader, &writer)) {
        EXPECT_EQ(writer.size(), HDataWriter().size());
        return std::nullopt;
    }
    HDataReader answer(writer.bytes(), writer.size());
    const bool isException = answer.readBool();
    return {{isException, readText(answer)}};
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
