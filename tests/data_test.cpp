// The items of the host's messages: written, read back, cut and damaged.
#include <climits>
#include <memory>

#include "device_test.h"
#include "platform/hdata.h"

namespace {

using DataTest = tavtest::DeviceTest;

// In storage of exactly the message's size, where reading past the end is noticed.
std::vector<char> messageOf(const HDataWriter& writer) {
    const char* bytes = static_cast<const char*>(writer.bytes());
    return {bytes, bytes + writer.size()};
}

HDataReader readerOf(const std::vector<char>& message) {
    return {message.data(), message.size()};
}

std::unique_ptr<char[]> allocatedText(HDataReader& reader) {
    return std::unique_ptr<char[]>(reader.allocReadStr());
}

TEST_F(DataTest, BufferOfAnySize) {
    const struct {
        int size;
        const char* content;  // of a buffer that held "########"
        bool succeeds;
    } cases[] = {
        {5, "four", true},      {4, "fou", true},        {1, "", true},
        {0, "########", false}, {-1, "########", false}, {INT_MIN, "########", false},
    };
    HDataWriter writer;
    writer.writeStr("four");
    const std::vector<char> message = messageOf(writer);
    for (const auto& [size, content, succeeds] : cases) {
        SCOPED_TRACE(size);
        char buffer[] = "########";
        HDataReader reader = readerOf(message);
        reader.readStr(buffer, size);
        EXPECT_STREQ(buffer, content);
        EXPECT_EQ(reader.isSuccessful(), succeeds);
    }
}

TEST_F(DataTest, ItemOfAnotherTypeFailsForGood) {
    HDataWriter writer;
    writer.writeStr(nullptr);
    writer.writeInt(1);
    const std::vector<char> message = messageOf(writer);
    char buffer[] = "####";

    HDataReader asInt = readerOf(message);
    EXPECT_EQ(asInt.readInt(), 0);
    EXPECT_EQ(allocatedText(asInt), nullptr);
    EXPECT_FALSE(asInt.isSuccessful());

    HDataReader asText = readerOf(message);
    asText.readStr(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_TRUE(asText.isSuccessful());
    EXPECT_EQ(allocatedText(asText), nullptr);
    EXPECT_EQ(asText.readInt(), 0);
    EXPECT_FALSE(asText.isSuccessful());
}

// The exact storage shows a length that is followed past the end.
TEST_F(DataTest, CutMessageFails) {
    HDataWriter writer;
    writer.writeInt(-7);
    writer.writeStr("text");
    const std::vector<char> whole = messageOf(writer);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::vector<char> message(whole.data(), whole.data() + size);
        HDataReader reader = readerOf(message);
        reader.readInt();
        allocatedText(reader);
        EXPECT_EQ(reader.isSuccessful(), size == whole.size()) << "cut after " << size << " bytes";
    }
}

}  // namespace
