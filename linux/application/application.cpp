#include "linux/application/application.h"

#include <glib.h>
#include <simdjson.h>

#include <filesystem>
#include <map>
#include <string_view>

#include "base/application_folder.h"
#include "base/file.h"
#include "base/json/appinfo.h"
#include "base/json/text.h"
#include "base/print_line.h"

namespace fs = std::filesystem;

namespace tavlinux {
namespace {

constexpr const char* kModelFiles[] = {"/proc/device-tree/model", "/sys/class/dmi/id/product_name"};
constexpr const char* kMachineIdFiles[] = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
constexpr size_t kMostBytes = 1 << 20;
constexpr size_t kUniqueIdDigits = 40;

std::optional<std::string> memberOfFile(const fs::path& file, const std::string& member) {
    std::string error;
    const std::string text = base::readFile(file, kMostBytes, &error).value_or("");
    simdjson::dom::parser parser;
    simdjson::dom::element value;
    const bool isThere = parser.parse(text)[member].get(value) == simdjson::SUCCESS;
    return isThere ? std::optional(base::textOf(value)) : std::nullopt;
}

const fs::path& folder() {
    static const fs::path& path = *new fs::path(base::applicationFolder(base::executable()));
    return path;
}

std::map<std::string, std::string> appinfo() {
    std::string error;
    const auto values = base::readAppinfo(folder(), &error);
    if (!values) {
        base::printLine(stderr, "tav: " + error + "; the application runs without it");
    }
    return values.value_or(std::map<std::string, std::string>());
}

// The first line of the first file that has one.
template <size_t count>
std::optional<std::string> firstLine(const char* const (&files)[count]) {
    for (const char* file : files) {
        std::string error;
        const std::string text = base::readFile(file, kMostBytes, &error).value_or("");
        // The kernel's texts from a device tree end with a zero byte.
        std::string line = text.substr(0, text.find_first_of(std::string_view("\n\0", 2)));
        if (!line.empty()) {
            return line;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> appinfoValue(const std::string& key) {
    static const auto& values = *new std::map(appinfo());
    const auto found = values.find(key);
    return found != values.end() ? std::optional(found->second) : std::nullopt;
}

const std::string& applicationId() {
    static const std::string& id = *new std::string(
        appinfoValue("id").value_or(fs::path(base::executable()).filename().string()));
    return id;
}

std::string dataFilePath(const std::string& name) {
    std::error_code problem;
    const fs::path shipped = folder() / name;
    if (fs::exists(shipped, problem)) {
        return shipped.string();
    }
    const fs::path own = fs::path(g_get_user_data_dir()) / applicationId();
    fs::create_directories(own, problem);
    return (own / name).string();
}

std::optional<std::string> portabilityValue(const std::string& key) {
    const char* value = g_getenv(("TAV_PORTABILITY_" + key).c_str());
    if (value != nullptr) {
        return value;
    }
    return memberOfFile(fs::path(g_get_user_config_dir()) / "libtav" / "portability.json", key);
}

std::optional<std::string> machineName() {
    return firstLine(kModelFiles);
}

std::optional<std::string> systemVersion() {
    g_autofree char* version = g_get_os_info(G_OS_INFO_KEY_VERSION_ID);
    if (version == nullptr) {
        return std::nullopt;
    }
    const std::string text = version;
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

std::optional<std::string> uniqueId(const std::string& application) {
    const std::optional<std::string> machine = firstLine(kMachineIdFiles);
    if (!machine) {
        return std::nullopt;
    }
    g_autofree char* digest = g_compute_hmac_for_string(
        G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(machine->data()), machine->size(),
        application.c_str(), static_cast<gssize>(application.size()));
    return std::string(digest, kUniqueIdDigits);
}

}  // namespace tavlinux
