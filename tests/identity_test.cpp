// The file that holds the device's unique id.
#include <filesystem>
#include <fstream>

#include "resources.h"
#include "transcript.h"

namespace {

namespace fs = std::filesystem;

class UniqueIdTest : public tavtest::TranscriptTest {
protected:
    fs::path path() const { return device.root() + "/proc/nduid"; }

    // With every byte that was put into the buffer, the zero at the end aside.
    static std::string uniqueId(int length) {
        const long descriptors = tavtest::openDescriptors();
        std::string bytes(300, '#');
        const int code = TAV_GetUniqueID(bytes.data(), length);
        EXPECT_EQ(tavtest::openDescriptors(), descriptors);
        const size_t end = bytes.find_last_not_of('#') + 1;
        EXPECT_LE(end, static_cast<size_t>(length));
        return std::to_string(code) + " " + testing::PrintToString(bytes.substr(0, end));
    }
};

TEST_F(UniqueIdTest, IsTheFileWithoutItsLastLineFeed) {
    const std::string digits(63, '7');
    const std::string contents[] = {digits.substr(0, 40) + "\n",
                                    "7",
                                    "\n",
                                    "7\n\n\n",
                                    "7\r\n",
                                    std::string("7\0008\n", 4),
                                    digits + "\n",
                                    digits.substr(0, 62) + "\nmore",
                                    digits + digits,
                                    digits + "\n" + digits + "\n",
                                    ""};
    for (const std::string& content : contents) {
        std::ofstream(path(), std::ios::binary) << content;
        CALL(uniqueId(64));
        CALL(uniqueId(200));
    }
    fs::remove(path());
    CALL(uniqueId(64));
    fs::create_directory(path());
    CALL(uniqueId(64));
}

}  // namespace
