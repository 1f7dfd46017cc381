#include "device/preferences.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

#include "device_test.h"
#include "resources.h"

namespace {

namespace fs = std::filesystem;
using tavtest::openDescriptors;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

class PreferencesTest : public tavtest::DeviceTest {
protected:
    fs::path databasePath() const { return device.root() + "/var/kora/preferences/systemprefs.db"; }

    // A new database made by the statements, with the connection that made it.
    Database makeDatabase(const std::string& statements) {
        fs::remove_all(databasePath());
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(databasePath().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        return Database(database);
    }

    // The value is an SQL expression.
    void store(const std::string& key, const std::string& value) {
        makeDatabase(
            "CREATE TABLE Preferences (KEY, VALUE);"
            "INSERT INTO Preferences VALUES ('" +
            key + "', " + value + ")");
    }

    // Under the keys of all the objects.
    void storeObject(const std::string& text) {
        store("region", "'" + text + "'), ('locale', '" + text + "'");
    }

    char buffer[256] = {};
};

TEST_F(PreferencesTest, TheNameComesWithoutItsQuotes) {
    const std::string kilobytes(100000, 'k');
    const struct {
        std::string stored;  // an SQL expression
        std::string name;
    } rows[] = {
        {R"('"Kitchen"')", "Kitchen"},
        {"'Kitchen'", "Kitchen"},
        {R"('"Kitchen')", "\"Kitchen"},
        {R"('Kitchen"')", "Kitchen\""},
        {R"('""')", ""},
        {R"('"')", ""},
        {R"('"""')", "\""},
        {R"('"a\"b\u00e9"')", R"(a\"b\u00e9)"},
        {"CAST(x'22ff80c322' AS TEXT)", "\xff\x80\xc3"},
        {"42", "42"},
        {"'\"" + kilobytes + "\"'", kilobytes},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stored.substr(0, 40));
        store("deviceName", row.stored);
        std::vector<char> exact(row.name.size() + 1, 'x');
        EXPECT_EQ(TAV_GetDeviceName(exact.data(), static_cast<int>(exact.size())), TAV_NOERROR);
        EXPECT_EQ(std::string(exact.data()), row.name);
    }
}

TEST_F(PreferencesTest, EachWayADatabaseCanFailIsReported) {
    const char* noName = "Could not prep device name statement";
    const char* noField = "Could not prepare access from database";
    const char* noDatabase = "Could not open preferences database";
    const char* noParse = "Could not parse device name";
    const char* noValue = "Could not access from database";
    const std::string table = "CREATE TABLE Preferences (KEY, VALUE);";
    Database other;
    const struct {
        const char* what;
        std::function<void()> arrange;
        int nameCode;
        const char* nameMessage;
        const char* fieldMessage;
    } rows[] = {
        {"no file in a writable folder", [] {}, TAV_EDATAACCESS, noName, noField},
        {"no file, and none can be made",
         [this] {
             fs::remove(databasePath().parent_path());
             std::ofstream(databasePath().parent_path()) << "a file";
         },
         TAV_EDATAACCESS, noDatabase, noDatabase},
        {"a folder", [this] { fs::create_directory(databasePath()); }, TAV_EDATAACCESS, noDatabase,
         noDatabase},
        {"no database", [this] { std::ofstream(databasePath()) << std::string(4096, 'x'); },
         TAV_EDATAACCESS, noName, noField},
        {"no table", [this] { makeDatabase("CREATE TABLE Others (KEY, VALUE)"); }, TAV_EDATAACCESS,
         noName, noField},
        {"locked", [&] { other = makeDatabase(table + "BEGIN EXCLUSIVE"); }, TAV_EDATAACCESS,
         noName, noField},
        {"no row", [&] { makeDatabase(table); }, TAV_EOTHER,
         "Device has no name. Bypassed first use?", noValue},
        {"one column",
         [this] {
             makeDatabase(
                 "CREATE TABLE Preferences (KEY);"
                 "INSERT INTO Preferences VALUES ('deviceName'), ('region')");
         },
         TAV_EDATAACCESS, noParse, noValue},
        {"null values", [this] { store("deviceName", "NULL), ('region', NULL"); }, TAV_EDATAACCESS,
         noParse, noValue},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        startDevice({});
        const long descriptors = openDescriptors();
        const sqlite3_int64 memory = sqlite3_memory_used();
        row.arrange();
        EXPECT_EQ(TAV_GetDeviceName(buffer, sizeof buffer), row.nameCode);
        expectFailure("TAV_GetDeviceName", row.nameMessage);
        EXPECT_EQ(TAV_GetRegionCountryName(buffer, sizeof buffer), TAV_EDATAACCESS);
        expectFailure("getPrefsDBField", row.fieldMessage);
        other.reset();
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(sqlite3_memory_used(), memory);
    }
    startDevice({});
    store("deviceName", "''");
    EXPECT_EQ(TAV_GetDeviceName(buffer, sizeof buffer), TAV_EDATAACCESS);
    expectFailure("TAV_GetDeviceName", noParse);
}

TEST_F(PreferencesTest, FieldsAreReadFromTheObjectInSilence) {
    const char* missing = "error 11";
    const char* noObject = "error 4";
    const std::string code31(31, 'l');
    const struct {
        std::string stored;
        std::string code;
        std::string name;
        std::string language;
    } rows[] = {
        {R"({"countryCode":"us","countryName":"United States","languageCode":"en"})", "us",
         "United States", "en_us"},
        {R"({"countryCode":"","countryName":"","languageCode":"EN"})", "", "", "EN_"},
        {R"({"countryCode":")" + code31 + R"(","languageCode":")" + code31 + "\"}", code31, missing,
         code31 + "_" + code31},
        {R"({"countryCode":["us"],"countryName":7})", "[\"us\"]", "7", missing},
        {R"({"languageCode":"en"})", missing, missing, missing},
        {R"({"region":{"countryCode":"us"}})", missing, missing, missing},
        {"\"us\"", noObject, noObject, noObject},
        {"42", noObject, noObject, noObject},
        {R"({"countryCode":"us")", noObject, noObject, noObject},
        {"", noObject, noObject, noObject},
    };
    const auto answerOf = [this](int (*query)(char*, int)) {
        buffer[0] = '\0';
        const int code = query(buffer, sizeof buffer);
        EXPECT_TRUE(code == TAV_NOERROR || buffer[0] == '\0') << buffer;
        return code == TAV_NOERROR ? buffer : "error " + std::to_string(code);
    };
    const long descriptors = openDescriptors();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stored);
        storeObject(row.stored);
        EXPECT_EQ(answerOf(TAV_GetRegionCountryCode), row.code);
        EXPECT_EQ(answerOf(TAV_GetRegionCountryName), row.name);
        EXPECT_EQ(answerOf(TAV_GetLanguage), row.language);
        EXPECT_STREQ(SDL_GetError(), "");
        EXPECT_THAT(trace(), Not(Contains(HasSubstr("tav_e"))));
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    for (const char* stored :
         {R"({"countryCode":"us","languageCode":"l)", R"({"languageCode":"en","countryCode":"c)"}) {
        storeObject(stored + code31 + "\"}");
        EXPECT_EQ(answerOf(TAV_GetLanguage), "error 8");
        expectFailure("getPrefsDBField", "The sent-in string was too small to hold the result");
    }
}

TEST_F(PreferencesTest, AFieldLookUpTracesAllItsArguments) {
    storeObject("{}");
    EXPECT_EQ(tav::getPrefsDBField("region", "countryCode", nullptr, 9), TAV_EHOSTLOOKUP);
    EXPECT_THAT(trace(), ElementsAre("tav_f getPrefsDBField region, countryCode, (nil), 9"));
    EXPECT_EQ(tav::getPrefsDBField(std::string(5000, 'k').c_str(), "x", buffer, sizeof buffer),
              TAV_EDATAACCESS);
    expectFailure("getPrefsDBField", "Could not prepare access from database");
}

TEST_F(PreferencesTest, APropertyNeedsRoomForItsTerminator) {
    device.profile.properties["some.property"] = "12345";
    EXPECT_EQ(tav::getKoraPrefSystemValue("some.property", buffer, 6), TAV_NOERROR);
    EXPECT_STREQ(buffer, "12345");
    trace();
    for (const int length : {5, -1}) {
        EXPECT_EQ(tav::getKoraPrefSystemValue("some.property", nullptr, length),
                  TAV_STRINGTOOSMALL);
        EXPECT_THAT(trace(), ElementsAre("tav_f getKoraPrefSystemValue some.property, (nil), " +
                                             std::to_string(length),
                                         "tav_1 getKoraPrefSystemValue TAV_STRINGTOOSMALL"));
    }
    EXPECT_EQ(tav::getKoraPrefSystemValue("no.property", buffer, 6), TAV_EOTHER);
    EXPECT_EQ(trace().back(), "tav_1 getKoraPrefSystemValue KPSystemCopyStringValue failed");
    EXPECT_STREQ(SDL_GetError(), "");
}

}  // namespace
