#include "linux/host/settings.h"

#include <glib.h>

#include <algorithm>
#include <fstream>
#include <map>

#include "base/json/writer.h"
#include "front/host.h"
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
    values["locale"] =
        base::jsonObject("languageCode", language.code, "countryCode", language.country);
    if (language.country.empty()) {
        return values;
    }
    values["region"] = base::jsonObject("countryCode", language.country, "countryName",
                                        countryName(language.country));
    return values;
}

}  // namespace

bool writePreferences(const std::string& file) {
    return front::createPreferences(file, preferences());
}

}  // namespace tavlinux
