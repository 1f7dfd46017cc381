// The items of the host's messages: written, read back, cut and damaged.
#include <climits>
#include <memory>

#include "device_test.h"
#include "platform/hdata.h"

namespace {

using DataTest = tavtest::DeviceTest;

std::string messageOf(const HDataWriter& writer) {
    return {static_cast<const char*>(writer.bytes()), writer.size()};
}

// A message in storage of exactly its size, where reading past the end is noticed.
class Message {
public:
    explicit Message(const std::string& bytes)
        : m_bytes(new char[bytes.size()]), m_size(bytes.size()) {
        bytes.copy(m_bytes.get(), m_size);
    }

    HDataReader reader() const { return {m_bytes.get(), m_size}; }

private:
    std::unique_ptr<char[]> m_bytes;
    size_t m_size;
};

std::unique_ptr<char[]> allocatedText(HDataReader& reader) {
    return std::unique_ptr<char[]>(reader.allocReadStr());
}

// One item of each type, and what reading them all in order gives.
std::string sampleMessage() {
    HDataWriter writer;
    writer.writeInt(-7);
    writer.writeBool(true);
    writer.writeStr("text");
    writer.writeStr("more");
    return messageOf(writer);
}

void readSample(HDataReader& reader) {
    char buffer[8];
    reader.readInt();
    reader.readBool();
    reader.readStr(buffer, sizeof buffer);
    allocatedText(reader);
}

TEST_F(DataTest, ValuesArriveInOrder) {
    const std::string longText(100000, 'x');
    HDataWriter writer;
    writer.writeInt(INT_MIN);
    writer.writeStr(longText.c_str());
    writer.writeBool(false);
    writer.writeStr(nullptr);
    writer.writeBool(true);
    writer.writeStr("");
    writer.writeInt(INT_MAX);
    const Message message(messageOf(writer));
    HDataReader reader = message.reader();
    EXPECT_EQ(reader.readInt(), INT_MIN);
    EXPECT_EQ(allocatedText(reader).get(), longText);
    EXPECT_FALSE(reader.readBool());
    EXPECT_EQ(allocatedText(reader), nullptr);
    EXPECT_TRUE(reader.readBool());
    EXPECT_STREQ(allocatedText(reader).get(), "");
    EXPECT_EQ(reader.readInt(), INT_MAX);
    EXPECT_TRUE(reader.isSuccessful());
}

TEST_F(DataTest, BufferOfAnySize) {
    const struct {
        int size;
        const char* content;  // of a buffer that held "########"
        bool succeeds;
    } cases[] = {
        {8, "four", true},
        {5, "four", true},
        {4, "fou", true},
        {1, "", true},
        {0, "########", false},
        {-1, "########", false},
        {INT_MIN, "########", false},
    };
    HDataWriter writer;
    writer.writeStr("four");
    const Message message(messageOf(writer));
    for (const auto& [size, content, succeeds] : cases) {
        SCOPED_TRACE(size);
        char buffer[] = "########";
        HDataReader reader = message.reader();
        reader.readStr(buffer, size);
        EXPECT_STREQ(buffer, content);
        EXPECT_EQ(reader.isSuccessful(), succeeds);
    }
}

TEST_F(DataTest, NullTextLeavesTheBufferEmpty) {
    HDataWriter writer;
    writer.writeStr(nullptr);
    const Message message(messageOf(writer));
    HDataReader reader = message.reader();
    char buffer[] = "####";
    reader.readStr(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_TRUE(reader.isSuccessful());
}

TEST_F(DataTest, ItemOfAnotherTypeFailsForGood) {
    HDataWriter writer;
    writer.writeStr("1");
    writer.writeInt(1);
    const Message message(messageOf(writer));
    char buffer[] = "####";

    HDataReader asInt = message.reader();
    EXPECT_EQ(asInt.readInt(), 0);
    EXPECT_EQ(allocatedText(asInt), nullptr);
    EXPECT_FALSE(asInt.isSuccessful());

    HDataReader asBool = message.reader();
    EXPECT_FALSE(asBool.readBool());
    asBool.readStr(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(asBool.isSuccessful());

    HDataReader asText = message.reader();
    allocatedText(asText);
    EXPECT_EQ(allocatedText(asText), nullptr);
    EXPECT_EQ(asText.readInt(), 0);
    EXPECT_FALSE(asText.isSuccessful());
}

TEST_F(DataTest, CutMessageFails) {
    const std::string whole = sampleMessage();
    for (size_t length = 0; length < whole.size(); ++length) {
        const Message message(whole.substr(0, length));
        HDataReader reader = message.reader();
        readSample(reader);
        EXPECT_FALSE(reader.isSuccessful()) << "cut after " << length << " bytes";
    }
}

// Hits tags, lengths and contents alike. The exact storage shows a length that is followed past the
// end, the sanitizers' allocator one that is believed.
TEST_F(DataTest, DamagedByteNeverLeadsPastTheEnd) {
    const std::string whole = sampleMessage();
    for (size_t place = 0; place < whole.size(); ++place) {
        for (int value = 0; value <= UCHAR_MAX; ++value) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(value);
            const Message message(damaged);
            HDataReader reader = message.reader();
            readSample(reader);
            reader.readInt();
            EXPECT_FALSE(reader.isSuccessful()) << "byte " << place << " is " << value;
        }
    }
}

TEST_F(DataTest, FaultStrikesTheReadThatItCounts) {
    const Message message(sampleMessage());
    for (int n = 1; n <= 4; ++n) {
        SCOPED_TRACE(n);
        device.failNth(sim::Fault::Read, n);
        HDataReader reader = message.reader();
        char buffer[] = "####";
        EXPECT_EQ(reader.readInt(), n == 1 ? 0 : -7);
        EXPECT_EQ(reader.readBool(), n > 2);
        reader.readStr(buffer, sizeof buffer);
        EXPECT_STREQ(buffer, n > 3 ? "text" : "");
        EXPECT_EQ(allocatedText(reader), nullptr);
        EXPECT_FALSE(reader.isSuccessful());
        EXPECT_EQ(device.occurrences(sim::Fault::Read), 4);
    }
}

}  // namespace
