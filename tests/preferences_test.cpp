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
using testing::ElementsAre;

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

    void storeText(const std::string& key, const std::string& text) {
        store(key, "'" + text + "'");
    }

    // Expects that the last call failed in silence.
    void expectNoMessage() {
        EXPECT_STREQ(SDL_GetError(), "");
        for (const std::string& line : trace()) {
            EXPECT_EQ(line.find("tav_e"), std::string::npos) << line;
        }
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
        {"x'4142'", "AB"},
        {"'\"" + kilobytes + "\"'", kilobytes},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stored.substr(0, 40));
        store("deviceName", row.stored);
        std::vector<char> exact(row.name.size() + 1, 'x');
        const int length = static_cast<int>(exact.size());
        EXPECT_EQ(TAV_GetDeviceName(exact.data(), length), TAV_NOERROR);
        EXPECT_EQ(std::string(exact.data()), row.name);
        if (length > 1) {
            EXPECT_EQ(TAV_GetDeviceName(exact.data(), length - 1), TAV_STRINGTOOSMALL);
            expectFailure("TAV_GetDeviceName", "buffer too small. Required length " +
                                                   std::to_string(length) + ", buffer length " +
                                                   std::to_string(length - 1));
        }
    }
}

TEST_F(PreferencesTest, EachWayADatabaseCanFailIsReported) {
    const char* noName = "Could not prep device name statement";
    const char* noField = "Could not prepare access from database";
    const char* noDatabase = "Could not open preferences database";
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
         "Device has no name. Bypassed first use?", "Could not access from database"},
        {"one column",
         [this] {
             makeDatabase(
                 "CREATE TABLE Preferences (KEY);"
                 "INSERT INTO Preferences VALUES ('deviceName'), ('region')");
         },
         TAV_EDATAACCESS, "Could not parse device name", "Could not access from database"},
        {"null values",
         [&] {
             makeDatabase(table +
                          "INSERT INTO Preferences VALUES ('deviceName', NULL), ('region', NULL)");
         },
         TAV_EDATAACCESS, "Could not parse device name", "Could not access from database"},
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
    storeText("deviceName", "");
    EXPECT_EQ(TAV_GetDeviceName(buffer, sizeof buffer), TAV_EDATAACCESS);
    expectFailure("TAV_GetDeviceName", "Could not parse device name");
}

TEST_F(PreferencesTest, AnswersLeaveNothingOpenAndAreNotRemembered) {
    const long descriptors = openDescriptors();
    for (const std::string name : {"first", "second"}) {
        storeText("deviceName", name);
        EXPECT_EQ(TAV_GetDeviceName(buffer, sizeof buffer), TAV_NOERROR);
        EXPECT_EQ(buffer, name);
        EXPECT_EQ(TAV_GetDeviceName(buffer, 1), TAV_STRINGTOOSMALL);
        storeText("region", R"({"countryCode":")" + name + "\"}");
        EXPECT_EQ(TAV_GetRegionCountryCode(buffer, sizeof buffer), TAV_NOERROR);
        EXPECT_EQ(buffer, name);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(PreferencesTest, FieldsAreReadFromTheObject) {
    const struct {
        const char* stored;
        int codeOfCode;
        const char* code;
        int codeOfName;
        const char* name;
    } rows[] = {
        {R"({"countryCode":"us","countryName":"United States"})", 0, "us", 0, "United States"},
        {R"({"countryName":""})", TAV_EHOSTLOOKUP, "", 0, ""},
        {R"({"region":{"countryCode":"us"}})", TAV_EHOSTLOOKUP, "", TAV_EHOSTLOOKUP, ""},
        {R"({"countryCode":["us"],"countryName":7})", 0, "[\"us\"]", 0, "7"},
        {"\"us\"", TAV_EOTHER, "", TAV_EOTHER, ""},
        {"42", TAV_EOTHER, "", TAV_EOTHER, ""},
        {R"({"countryCode":"us")", TAV_EOTHER, "", TAV_EOTHER, ""},
        {"", TAV_EOTHER, "", TAV_EOTHER, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stored);
        storeText("region", row.stored);
        EXPECT_EQ(TAV_GetRegionCountryCode(buffer, sizeof buffer), row.codeOfCode);
        EXPECT_STREQ(buffer, row.code);
        EXPECT_EQ(TAV_GetRegionCountryName(buffer, sizeof buffer), row.codeOfName);
        EXPECT_STREQ(buffer, row.name);
        expectNoMessage();
    }
}

TEST_F(PreferencesTest, LanguageJoinsTwoFields) {
    const std::string code31(31, 'l');
    const struct {
        std::string stored;
        int code;
        std::string language;
    } rows[] = {
        {R"({"languageCode":"en","countryCode":"us"})", 0, "en_us"},
        {R"({"languageCode":"EN","countryCode":""})", 0, "EN_"},
        {R"({"languageCode":")" + code31 + R"(","countryCode":")" + code31 + "\"}", 0,
         code31 + "_" + code31},
        {R"({"languageCode":"l)" + code31 + R"(","countryCode":"us"})", TAV_STRINGTOOSMALL, ""},
        {R"({"languageCode":"en","countryCode":"c)" + code31 + "\"}", TAV_STRINGTOOSMALL, ""},
        {R"({"languageCode":"en"})", TAV_EHOSTLOOKUP, ""},
        {R"({"countryCode":"us"})", TAV_EHOSTLOOKUP, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.stored);
        storeText("locale", row.stored);
        EXPECT_EQ(TAV_GetLanguage(buffer, sizeof buffer), row.code);
        if (row.code == TAV_NOERROR) {
            EXPECT_EQ(buffer, row.language);
        }
        if (row.code == TAV_STRINGTOOSMALL) {
            expectFailure("getPrefsDBField", "The sent-in string was too small to hold the result");
        } else {
            expectNoMessage();
        }
    }
}

TEST_F(PreferencesTest, AFieldLookUpTracesAllItsArguments) {
    storeText("region", "{}");
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
    for (const int length : {5, 1, 0, -1}) {
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
