// The file that holds the device's unique id.
#include "transcript.h"

namespace {

using UniqueIdTest = tavtest::TranscriptTest;

TEST_F(UniqueIdTest, IsTheFileWithoutItsLastLineFeed) {
    const std::string digits(63, '7');
    const std::string zero = std::string("7\0008\n|", 5);
    const long descriptors = openDescriptors();
    for (const std::string& content :
         split(digits.substr(0, 40) + "\n|7|\n|7\n\n\n|7\r\n|" + zero + digits + "\n|" +
               digits.substr(0, 62) + "\nmore|" + digits + digits + '|' + digits + "\n" + digits +
               "\n||")) {
        write("/proc/nduid", content);
        CALL(filled(TAV_GetUniqueID, 64));
        CALL(filled(TAV_GetUniqueID, 200));
    }
    std::filesystem::remove(path("/proc/nduid"));
    CALL(filled(TAV_GetUniqueID, 64));
    std::filesystem::create_directory(path("/proc/nduid"));
    CALL(filled(TAV_GetUniqueID, 64));
    EXPECT_EQ(openDescriptors(), descriptors);
}

}  // namespace
