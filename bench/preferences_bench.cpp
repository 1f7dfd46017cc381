// Settings from the preferences database, compared with the bare SQLite calls.
#include <sqlite3.h>

#include <algorithm>
#include <cstring>

#include "bench/bench_device.h"
#include "platform/napp.h"

namespace {

using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";
constexpr char kNameQuery[] = "SELECT * FROM Preferences WHERE KEY='deviceName'";
constexpr char kLocaleQuery[] = "SELECT * FROM Preferences WHERE KEY='locale'";

tavsim::Profile settings() {
    tavsim::Profile profile;
    profile.preferences = {{"deviceName", "Kitchen"},
                           {"locale", R"({"languageCode":"en","countryCode":"us"})"}};
    return profile;
}

// Copies the first row's value, cut to the buffer; false when there is none.
bool readRow(const char* query, char* buffer, size_t size) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    bool found = sqlite3_open(kDatabase, &database) == SQLITE_OK &&
                 sqlite3_prepare(database, query, -1, &statement, nullptr) == SQLITE_OK &&
                 sqlite3_step(statement) == SQLITE_ROW;
    if (found) {
        const char* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 1));
        const size_t length = std::min(std::strlen(text), size - 1);
        std::memcpy(buffer, text, length);
        buffer[length] = '\0';
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return found;
}

template <typename Query>
void runQuery(benchmark::State& state, Query query) {
    const BenchDevice device(state, settings());
    bool successful = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(successful = query());
    }
    expect(state, successful, "the setting was not read");
}

void deviceNameLibtav(benchmark::State& state) {
    char name[64] = {};
    runQuery(state, [&name] { return TAV_GetDeviceName(name, sizeof name) == TAV_NOERROR; });
    expect(state, std::strcmp(name, "Kitchen") == 0, "another name");
}
BENCHMARK(deviceNameLibtav);

void deviceNameSqlite(benchmark::State& state) {
    char name[64] = {};
    runQuery(state, [&name] { return readRow(kNameQuery, name, sizeof name); });
    expect(state, std::strcmp(name, "Kitchen") == 0, "another name");
}
BENCHMARK(deviceNameSqlite);

void languageLibtav(benchmark::State& state) {
    char language[64] = {};
    runQuery(state,
             [&language] { return TAV_GetLanguage(language, sizeof language) == TAV_NOERROR; });
    expect(state, std::strcmp(language, "en_us") == 0, "another language");
}
BENCHMARK(languageLibtav);

// Language and country are members of one preference, which is read for each of them.
void languageSqlite(benchmark::State& state) {
    char locale[64] = {};
    runQuery(state, [&locale] {
        const bool hasLanguage = readRow(kLocaleQuery, locale, sizeof locale);
        const bool hasCountry = readRow(kLocaleQuery, locale, sizeof locale);
        return hasLanguage && hasCountry;
    });
}
BENCHMARK(languageSqlite);

// The host's function reads the members.
void languageSqliteAndHost(benchmark::State& state) {
    char locale[64] = {};
    char language[32] = {};
    char country[32] = {};
    const auto readMember = [&locale](const char* name, char* buffer, int size) {
        return readRow(kLocaleQuery, locale, sizeof locale) &&
               NApp_GetJsonValue(locale, name, buffer, size) == NAPP_SUCCESS;
    };
    runQuery(state, [&] {
        return readMember("languageCode", language, sizeof language) &&
               readMember("countryCode", country, sizeof country);
    });
    expect(state, std::strcmp(language, "en") == 0 && std::strcmp(country, "us") == 0,
           "another language");
}
BENCHMARK(languageSqliteAndHost);

}  // namespace
