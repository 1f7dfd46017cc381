// The device's files on this system. They are created when first used, in the user's run-time
// folder, or if nothing can be written there, in the folder for temporary files. The preferences
// are the machine's name, region and language, as far as hostnamed, the environment and localed
// know them.
#include "front/files.h"

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "base/file.h"
#include "base/json/writer.h"
#include "front/host.h"
#include "front/next.h"
#include "linux/application/application.h"
#include "linux/bus/connection.h"
#include "linux/host/in_front.h"

namespace fs = std::filesystem;

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

// From a text like "de_DE.UTF-8@euro": the language and, if given, the country.
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

// The English name, or the code where the system has no list.
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
    // The library takes the text between the quotes as it is, without escape sequences.
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

bool makeFiles(const fs::path& folder) {
    const fs::path database = folder / fs::path(front::kDatabase).relative_path();
    const fs::path uniqueIdFile = folder / fs::path(front::kUniqueId).relative_path();
    std::error_code problem;
    fs::create_directories(database.parent_path(), problem);
    fs::create_directories(uniqueIdFile.parent_path(), problem);
    if (access(uniqueIdFile.parent_path().c_str(), W_OK) != 0) {
        return false;
    }
    // Another process of the same application may create the files at the same time.
    const fs::path made = database.string() + "." + std::to_string(getpid());
    fs::remove(made, problem);
    if (front::createPreferences(made, preferences())) {
        fs::rename(made, database, problem);
    }
    fs::remove(made, problem);
    std::string error;
    if (const std::optional<std::string> id = uniqueId(applicationId())) {
        base::writeFile(uniqueIdFile, *id + "\n", &error);
    }
    return true;
}

// Everyone can write to the folder for temporary files, so ours in it must belong to this user.
fs::path ownTemporaryFolder() {
    fs::path folder = g_get_tmp_dir() + ("/libtav-" + std::to_string(geteuid()));
    mkdir(folder.c_str(), S_IRWXU);
    struct stat found = {};
    const bool isOwn = lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
                       found.st_uid == geteuid() && (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return isOwn ? folder : front::kNowhere;
}

fs::path makeDeviceFolder() {
    const fs::path own = fs::path("libtav") / applicationId();
    fs::path folder = g_get_user_runtime_dir() / own;
    if (makeFiles(folder)) {
        return folder;
    }
    fs::path temporary = ownTemporaryFolder() / own;
    makeFiles(temporary);
    return temporary;
}

}  // namespace
}  // namespace tavlinux

namespace front {

std::optional<std::string> pathOf(const char* devicePath) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    if (!tavlinux::isInFront()) {
        return kNowhere;
    }
    static const std::string& folder = *new std::string(tavlinux::makeDeviceFolder());
    return folder + devicePath;
}

uid_t deviceUser(uid_t realUser) {
    return realUser;
}

// This system has no bus that reads roles.
std::optional<int> rescan(int (*)(const char*)) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    return tavlinux::isInFront() ? 0 : -1;
}

}  // namespace front
