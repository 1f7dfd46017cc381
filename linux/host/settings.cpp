#include "linux/host/settings.h"

#include <glib.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>

#include "base/json/writer.h"
#include "linux/bus/connection.h"

namespace tavlinux {
namespace {

constexpr char kHostname[] = "org.freedesktop.hostname1";
constexpr char kHostnamePath[] = "/org/freedesktop/hostname1";
constexpr char kLocale[] = "org.freedesktop.locale1";
constexpr char kLocalePath[] = "/org/freedesktop/locale1";
constexpr char kCountries[] = "/usr/share/zoneinfo/iso3166.tab";

struct Language {
    std::string code;
    std::string country;
};

std::string machineDisplayName() {
    for (const char* property : {"PrettyHostname", "StaticHostname", "Hostname"}) {
        const Variant value =
            propertyOf(Bus::System, kHostname, kHostnamePath, kHostname, property);
        if (!isOfType(value.get(), "s")) {
            break;
        }
        const char* name = g_variant_get_string(value.get(), nullptr);
        if (*name != '\0') {
            return name;
        }
    }
    return g_get_host_name();
}

// "de_DE.UTF-8@euro": the language and, where it is told, the country.
Language parseLocale(const std::string& locale) {
    const std::string plain = locale.substr(0, locale.find_first_of(".@"));
    if (plain == "C" || plain == "POSIX") {
        return {};
    }
    const size_t underscore = std::min(plain.find('_'), plain.size());
    g_autofree char* country = g_ascii_strdown(plain.substr(underscore).c_str(), -1);
    return {plain.substr(0, underscore), *country != '\0' ? country + 1 : ""};
}

Language languageOfEnvironment() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = g_getenv(name);
        if (value != nullptr && *value != '\0') {
            return parseLocale(value);
        }
    }
    return {};
}

Language languageOfSystem() {
    const Variant locale = propertyOf(Bus::System, kLocale, kLocalePath, kLocale, "Locale");
    if (!isOfType(locale.get(), "as")) {
        return {};
    }
    Language language;
    g_autofree const char** entries = g_variant_get_strv(locale.get(), nullptr);
    for (const char** entry = entries; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (text.starts_with("LANG=")) {
            language = parseLocale(text.substr(text.find('=') + 1));
        }
    }
    return language;
}

// The name in English; the code where the system has no list.
std::string countryName(const std::string& code) {
    std::ifstream countries(kCountries);
    for (std::string line; std::getline(countries, line);) {
        const size_t tab = line.find('\t');
        if (tab != std::string::npos &&
            g_ascii_strcasecmp(line.substr(0, tab).c_str(), code.c_str()) == 0) {
            return line.substr(tab + 1);
        }
    }
    return code;
}

std::map<std::string, std::string> preferences() {
    // The library takes what is between the quotes as it is.
    std::map<std::string, std::string> values{{"deviceName", '"' + machineDisplayName() + '"'}};
    Language language = languageOfEnvironment();
    if (language.code.empty()) {
        language = languageOfSystem();
    }
    if (language.code.empty()) {
        return values;
    }
    values["locale"] = base::JsonWriter()
                           .beginObject()
                           .member("languageCode", language.code)
                           .member("countryCode", language.country)
                           .endObject()
                           .take();
    if (language.country.empty()) {
        return values;
    }
    values["region"] = base::JsonWriter()
                           .beginObject()
                           .member("countryCode", language.country)
                           .member("countryName", countryName(language.country))
                           .endObject()
                           .take();
    return values;
}

bool insert(sqlite3* database, const std::string& key, const std::string& value) {
    sqlite3_stmt* statement = nullptr;
    bool isDone = sqlite3_prepare_v2(database, "INSERT INTO Preferences VALUES (?, ?)", -1,
                                     &statement, nullptr) == SQLITE_OK;
    isDone = isDone &&
             sqlite3_bind_text(statement, 1, key.c_str(), -1, SQLITE_TRANSIENT) == SQLITE_OK &&
             sqlite3_bind_text(statement, 2, value.c_str(), -1, SQLITE_TRANSIENT) == SQLITE_OK &&
             sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_finalize(statement);
    return isDone;
}

}  // namespace

bool writePreferences(const std::string& file) {
    sqlite3* opened = nullptr;
    const int status = sqlite3_open(file.c_str(), &opened);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    bool isDone = status == SQLITE_OK &&
                  sqlite3_exec(opened,
                               "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; BEGIN;"
                               "CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE TEXT);",
                               nullptr, nullptr, nullptr) == SQLITE_OK;
    for (const auto& [key, value] : preferences()) {
        isDone = isDone && insert(opened, key, value);
    }
    return isDone && sqlite3_exec(opened, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace tavlinux
