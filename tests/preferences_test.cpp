#include "device/preferences.h"

#include <sqlite3.h>

#include "transcript.h"

namespace {

namespace fs = std::filesystem;

class PreferencesTest : public tavtest::TranscriptTest {
protected:
    fs::path databasePath() const { return device.root() + "/var/kora/preferences/systemprefs.db"; }

    // Makes a new database by the statements, and returns its connection.
    sqlite3* makeDatabase(const std::string& statements) {
        fs::remove_all(databasePath());
        sqlite3* database = nullptr;
        sqlite3_open(databasePath().c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        return database;
    }

    // The values are SQL expressions.
    void store(const std::string& name, const std::string& object) {
        sqlite3_close(makeDatabase(kTable + "INSERT INTO Preferences VALUES ('deviceName', " +
                                   name + "), ('region', " + object + "), ('locale', " + object +
                                   ")"));
    }

    using Query = int (*)(char*, int);

    // Writes a line with what is stored and the result of each query, and one for each new error.
    void showAll(const std::string& what,
                 const std::vector<Query>& queries = {TAV_GetRegionCountryCode,
                                                      TAV_GetRegionCountryName, TAV_GetLanguage}) {
        const long descriptors = openDescriptors();
        const sqlite3_int64 memory = sqlite3_memory_used();
        std::string results, errors;
        for (const Query query : queries) {
            SDL_ClearError();
            results += (results.empty() ? "" : ", ") + filled(query, 256);
            const std::string error = SDL_GetError();
            errors += errors.ends_with(error) ? "" : "\n    " + error;
        }
        note(what + (what.size() > 80 ? " ->\n    " : " -> ") + results + errors);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(sqlite3_memory_used(), memory);
    }

    void showWithName(const std::string& what) {
        showAll(what, {TAV_GetDeviceName, TAV_GetRegionCountryCode, TAV_GetLanguage});
    }

    const std::string kTable = "CREATE TABLE Preferences (KEY, VALUE);";
};

TEST_F(PreferencesTest, Values) {
    for (const std::string& name :
         split(R"('"Kitchen"'|'Kitchen'|'"Kitchen'|'Kitchen"'|'""'|'"'|'"""'|'"a\"b\u00e9"'|)"
               "CAST(x'22ff80c322' AS TEXT)|42|NULL|''")) {
        store(name, "NULL");
        showAll(name, {TAV_GetDeviceName});
    }
    const std::string longest(31, 'l');
    for (const std::string& object :
         split(R"({"countryCode":"us","countryName":"United States","languageCode":"en"}|)"
               R"({"countryCode":"","countryName":"","languageCode":"EN"}|{"countryCode":")" +
               longest + R"(","languageCode":")" + longest + R"("}|)" +
               R"({"countryCode":"us","languageCode":"l)" + longest + R"("}|)" +
               R"({"languageCode":"en","countryCode":"c)" + longest + R"("}|)" +
               R"({"countryCode":["us"],"countryName":7}|{"languageCode":"en"}|)" +
               R"({"region":{"countryCode":"us"}}|"us"|42|{"countryCode":"us"||)")) {
        store("'n'", "'" + object + "'");
        showAll(object);
    }
    const std::string kilobytes(100000, 'k');
    store("'\"" + kilobytes + "\"'", "NULL");
    std::vector<char> exact(kilobytes.size() + 1, 'x');
    EXPECT_EQ(TAV_GetDeviceName(exact.data(), static_cast<int>(exact.size())), TAV_NOERROR);
    EXPECT_EQ(exact.data(), kilobytes);
}

TEST_F(PreferencesTest, DatabasesThatFail) {
    showWithName("no file in a writable folder");
    for (const std::string& statements :
         split("CREATE TABLE Others (KEY, VALUE)|" + kTable + "|CREATE TABLE Preferences (KEY); " +
               "INSERT INTO Preferences VALUES ('deviceName'), ('region'), ('locale')")) {
        sqlite3_close(makeDatabase(statements));
        showWithName(statements);
    }
    sqlite3* locked = makeDatabase(kTable + "BEGIN EXCLUSIVE");
    CALL(filled(TAV_GetDeviceName, 256));
    CALL(filled(TAV_GetLanguage, 256));
    sqlite3_close(locked);
    std::ofstream(databasePath()) << std::string(4096, 'x');
    showWithName("no database");
    fs::remove(databasePath());
    fs::create_directory(databasePath());
    showWithName("a folder");
    fs::remove_all(databasePath().parent_path());
    std::ofstream(databasePath().parent_path()) << "a file";
    showWithName("no file, and none can be made");
}

TEST_F(PreferencesTest, LookUps) {
    char buffer[256] = {};
    store("NULL", "'{}'");
    CALL(tav::getPrefsDBField("region", "countryCode", nullptr, 9));
    EXPECT_EQ(tav::getPrefsDBField(std::string(5000, 'k').c_str(), "x", buffer, sizeof buffer),
              TAV_EDATAACCESS);
    device.profile.properties["some.property"] = "12345";
    CALL(tav::getKoraPrefSystemValue("some.property", buffer, 6));
    CALL(std::string(buffer));
    CALL(tav::getKoraPrefSystemValue("some.property", nullptr, 5));
    CALL(tav::getKoraPrefSystemValue("some.property", nullptr, -1));
    CALL(tav::getKoraPrefSystemValue("no.property", buffer, 6));
}

}  // namespace
