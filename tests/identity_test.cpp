#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "device_test.h"
#include "resources.h"

namespace {

namespace fs = std::filesystem;
using tavtest::openDescriptors;
using testing::ElementsAre;

class IdentityTest : public tavtest::DeviceTest {
protected:
    fs::path uniqueIdPath() const { return device.root() + "/proc/nduid"; }

    char buffer[256] = {};
};

// Every function that fills a buffer, with a device on which all of them have an answer.
struct BufferFunction {
    const char* name;
    std::function<int(char*, int)> call;
    const char* entry;  // the arguments that the entry's trace has before the buffer
    const char* lengthMessage;
    const char* value;
    int enough;  // the shortest buffer that does
    const char* reporter;
    const char* tooSmall;  // with the length, where the message has one; null for none
};

constexpr char kNotPositive[] = "buffer length must be greater than 0";
constexpr char kFieldTooLong[] = "The sent-in string was too small to hold the result";
constexpr char kUniqueId[] = "0123456789abcdef0123456789abcdef01234567";

const BufferFunction kBufferFunctions[] = {
    {"TAV_GetDeviceName", TAV_GetDeviceName, "", kNotPositive, "Kitchen", 8, "TAV_GetDeviceName",
     "buffer too small. Required length 8, buffer length %d"},
    {"TAV_GetRegionCountryCode", TAV_GetRegionCountryCode, "", kNotPositive, "us", 3,
     "getPrefsDBField", kFieldTooLong},
    {"TAV_GetRegionCountryName", TAV_GetRegionCountryName, "", kNotPositive, "Utopia", 7,
     "getPrefsDBField", kFieldTooLong},
    {"TAV_GetLanguage", TAV_GetLanguage, "", kNotPositive, "en_us", 6, "TAV_GetLanguage",
     "string buffer too small"},
    {"TAV_GetUniqueID", TAV_GetUniqueID, "", "buffer length is invalid", kUniqueId, 64,
     "TAV_GetUniqueID", "buffer must be at least 64 bytes in length"},
    {"TAV_GetCallingPath", TAV_GetCallingPath, "", "buffer length is invalid", "./", 3,
     "TAV_GetCallingPath", "buffer too small. Required length 3, buffer length %d"},
    {"TAV_GetAppinfoValue",
     [](char* buffer, int length) { return TAV_GetAppinfoValue("id", buffer, length); }, "id, ",
     kNotPositive, "com.example.app", 16, nullptr, nullptr},
};

TEST_F(IdentityTest, BuffersAreCheckedAndNeverOverrun) {
    tavsim::Profile profile;
    profile.preferences = {{"deviceName", "\"Kitchen\""},
                           {"region", R"({"countryCode":"us","countryName":"Utopia"})"},
                           {"locale", R"({"languageCode":"en","countryCode":"us"})"}};
    profile.uniqueId = kUniqueId;
    profile.appinfo["id"] = "com.example.app";
    startDevice(profile);
    constexpr char kGuard = '\x5a';
    for (const BufferFunction& function : kBufferFunctions) {
        SCOPED_TRACE(function.name);
        const std::string name = function.name;
        trace();
        EXPECT_EQ(function.call(nullptr, 0), TAV_INVALIDINPUT);
        EXPECT_STREQ(SDL_GetError(), "buffer is NULL");
        EXPECT_THAT(trace(), ElementsAre("tav_f " + name + " " + function.entry + "(nil), 0",
                                         "tav_e " + name + " buffer is NULL"));
        std::string bytes(300, kGuard);
        for (const int length : {0, -1, INT_MIN}) {
            EXPECT_EQ(function.call(bytes.data(), length), TAV_INVALIDINPUT);
            expectFailure(name, function.lengthMessage);
        }
        EXPECT_EQ(bytes, std::string(300, kGuard));
        for (const int length : {1, function.enough - 1, function.enough, 200}) {
            SCOPED_TRACE(length);
            bytes.assign(300, kGuard);
            const int code = function.call(bytes.data(), length);
            EXPECT_EQ(bytes.find_first_not_of(kGuard, static_cast<std::size_t>(length)),
                      std::string::npos);
            if (length >= function.enough) {
                EXPECT_EQ(code, TAV_NOERROR);
                EXPECT_STREQ(bytes.c_str(), function.value);
                continue;
            }
            EXPECT_EQ(code, TAV_STRINGTOOSMALL);
            if (function.tooSmall == nullptr) {
                EXPECT_STREQ(SDL_GetError(), "");
                continue;
            }
            char message[100];
            std::snprintf(message, sizeof message, function.tooSmall, length);
            expectFailure(function.reporter, message);
        }
    }
}

TEST_F(IdentityTest, ThePathOfADataFileFitsExactlyOrNotAtAll) {
    ASSERT_EQ(TAV_GetDataFilePath("", buffer, sizeof buffer), TAV_NOERROR);
    EXPECT_TRUE(fs::is_directory(buffer)) << buffer;
    const std::string path = std::string(buffer) + "/save.dat";
    const int enough = static_cast<int>(path.size()) + 1;
    std::vector<char> exact(path.size() + 1);
    EXPECT_EQ(TAV_GetDataFilePath("save.dat", exact.data(), enough), TAV_NOERROR);
    EXPECT_EQ(exact.data(), path);
    EXPECT_EQ(TAV_GetDataFilePath("save.dat", exact.data(), enough - 1), TAV_STRINGTOOSMALL);
    trace();
    EXPECT_EQ(TAV_GetDataFilePath("f", nullptr, 0), TAV_INVALIDINPUT);
    EXPECT_EQ(trace().front(), "tav_f TAV_GetDataFilePath f, (nil), 0");
    EXPECT_STREQ(SDL_GetError(), "buffer is NULL");
}

TEST_F(IdentityTest, LookUpsNeedAName) {
    EXPECT_EQ(TAV_GetDataFilePath(nullptr, buffer, 0), TAV_INVALIDINPUT);
    expectFailure("TAV_GetDataFilePath", kNotPositive);
    EXPECT_EQ(TAV_GetDataFilePath(nullptr, buffer, 1), TAV_INVALIDINPUT);
    expectFailure("TAV_GetDataFilePath", "dataFileName is NULL");
    EXPECT_EQ(TAV_GetAppinfoValue(nullptr, buffer, 0), TAV_INVALIDINPUT);
    expectFailure("TAV_GetAppinfoValue", kNotPositive);
    EXPECT_EQ(TAV_GetAppinfoValue(nullptr, buffer, 1), TAV_INVALIDINPUT);
    expectFailure("TAV_GetAppinfoValue", "name is NULL");
    EXPECT_EQ(TAV_GetAppinfoValue("", buffer, 1), TAV_INVALIDINPUT);
    expectFailure("TAV_GetAppinfoValue", "name must not be blank");
    SDL_SetError("from before");
    EXPECT_EQ(TAV_GetAppinfoValue("no such key", buffer, sizeof buffer), TAV_EHOSTLOOKUP);
    EXPECT_STREQ(SDL_GetError(), "from before");
}

TEST_F(IdentityTest, TheUniqueIdIsTheFileWithoutItsLastLineFeed) {
    const std::string digits(63, '7');
    const struct {
        std::string content;
        int length;
        std::string expected;  // with all bytes that the file has before the end
    } rows[] = {
        {digits.substr(0, 40) + "\n", 64, digits.substr(0, 40)},
        {"7", 64, "7"},
        {"\n", 64, ""},
        {"7\n\n\n", 64, "7\n\n"},
        {"7\r\n", 64, "7\r"},
        {std::string("7\0008\n", 4), 64, std::string("7\0008", 3)},
        {digits + "\n", 64, digits},
        {digits.substr(0, 62) + "\nmore", 64, digits.substr(0, 62)},
        {digits + digits, 64, digits},
        {digits + "\n" + digits + "\n", 200, digits + "\n" + digits},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content);
        std::ofstream(uniqueIdPath(), std::ios::binary) << row.content;
        const long descriptors = openDescriptors();
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(TAV_GetUniqueID(buffer, row.length), TAV_NOERROR);
        EXPECT_EQ(std::string(buffer, row.expected.size() + 1), row.expected + '\0');
        EXPECT_EQ(buffer[row.length], 'x');
        EXPECT_EQ(openDescriptors(), descriptors);
    }
}

TEST_F(IdentityTest, AUniqueIdThatCannotBeReadIsEmpty) {
    const auto expectNone = [this](const char* message) {
        const long descriptors = openDescriptors();
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(TAV_GetUniqueID(buffer, 63), TAV_STRINGTOOSMALL);
        EXPECT_EQ(buffer[0], 'x');
        EXPECT_EQ(TAV_GetUniqueID(buffer, 64), TAV_EDATAACCESS);
        expectFailure("TAV_GetUniqueID", message);
        EXPECT_STREQ(buffer, "");
        EXPECT_EQ(openDescriptors(), descriptors);
    };
    expectNone("could not access ID file");
    std::ofstream(uniqueIdPath()).close();
    expectNone("could not read ID file");
    fs::remove(uniqueIdPath());
    fs::create_directory(uniqueIdPath());
    expectNone("could not read ID file");
}

TEST_F(IdentityTest, VersionTextsAreParsed) {
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"0 0 0", {"7", "", ".", "...."}},
        {"2 1 0", {"2.1.0", "  2.1  "}},
        {"1 4 0", {"1.4"}},
        {"1 2 3", {"1.2.3.4", "1.2.3beta"}},
        {"0 2 3", {"v1.2.3"}},
        {"1 2 4", {"1.2 build 3.4"}},
        {"3 0 5", {"Kora 3.0.5 (build 12.1)"}},
        {"1 0 0", {"1. 5"}},
        {"1 5 6", {"1. 5.6"}},
        {"1 5 0", {"1.5. 6"}},
        {"0 5 0", {"10 .5", ".5."}},
        {"4 5 0", {"\t4.5\n6"}},
        {"5 0 6", {"5..6"}},
        {"-1 2 -3", {"-1.+2.-3"}},
        {"2147483647 -2147483648 2147483647", {"2147483648.-2147483649.4294967297"}},
        {"2147483647 -2147483648 0", {"99999999999999999999.-99999999999999999999"}},
        {"1 2 2147483647", {"1.2." + std::string(251, '9')}},
    };
    for (const auto& [numbers, texts] : rows) {
        for (const std::string& text : texts) {
            device.profile.properties["com.vire.properties.version"] = text;
            TAV_OSVersion version;
            std::memset(&version, 'x', sizeof version);
            EXPECT_EQ(TAV_GetOSVersion(&version), TAV_NOERROR);
            std::ostringstream read;
            read << version.major << ' ' << version.minor << ' ' << version.revision;
            EXPECT_EQ(read.str(), numbers) << text;
            std::string padded = text;
            padded.resize(sizeof version.versionText);
            EXPECT_EQ(std::string(version.versionText, sizeof version.versionText), padded);
        }
    }
}

TEST_F(IdentityTest, AVersionThatCannotBeReadIsAllZero) {
    EXPECT_EQ(TAV_GetOSVersion(nullptr), TAV_INVALIDINPUT);
    EXPECT_THAT(trace(), ElementsAre("tav_f TAV_GetOSVersion (nil)",
                                     "tav_e TAV_GetOSVersion sent-in version pointer is NULL"));
    for (int attempt = 0; attempt < 2; ++attempt) {
        TAV_OSVersion version = {1, 2, 3, "text"};
        EXPECT_EQ(TAV_GetOSVersion(&version), TAV_EOTHER);
        expectFailure("TAV_GetOSVersion", "Unable to extract OS version information");
        EXPECT_EQ(version.major, 0);
        EXPECT_EQ(version.minor, 0);
        EXPECT_EQ(version.revision, 0);
        EXPECT_STREQ(version.versionText, "");
        // No such property the first time, and one that is too long the second.
        device.profile.properties["com.vire.properties.version"] = "1.2." + std::string(252, '9');
    }
}

using KeyTest = tavtest::EventTest;

TEST_F(KeyTest, EachKeyCodeHasAName) {
    const std::pair<int, const char*> rows[] = {
        {SDLK_ESCAPE, "Gesture back"},
        {229, "Gesture forward"},
        {230, "world 70"},
        {231, "Gesture area"},
        {SDLK_a, "a"},
        {INT_MIN, "unknown key"},
    };
    for (const auto& [key, name] : rows) {
        EXPECT_STREQ(TAV_GetKeyName(key), name) << key;
        EXPECT_THAT(trace(), ElementsAre("tav_f TAV_GetKeyName " + std::to_string(key)));
    }
}

}  // namespace
