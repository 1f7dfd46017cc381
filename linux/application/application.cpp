#include "linux/application/application.h"

#include <glib.h>
#include <simdjson.h>

#include <filesystem>

#include "base/file.h"
#include "base/json/text.h"

namespace fs = std::filesystem;

namespace tavlinux {
namespace {

constexpr size_t kMostBytes = 1 << 20;

std::optional<std::string> memberOfFile(const fs::path& file, const std::string& member) {
    std::string error;
    const std::string text = base::readFile(file, kMostBytes, &error).value_or("");
    simdjson::dom::parser parser;
    simdjson::dom::element value;
    const bool isThere = parser.parse(text)[member].get(value) == simdjson::SUCCESS;
    return isThere ? std::optional(base::textOf(value)) : std::nullopt;
}

fs::path folderOfExecutable() {
    return fs::path(executable()).parent_path();
}

}  // namespace

std::string executable() {
    std::error_code problem;
    return fs::read_symlink("/proc/self/exe", problem).string();
}

std::optional<std::string> appinfoValue(const std::string& key) {
    return memberOfFile(folderOfExecutable() / "appinfo.json", key);
}

const std::string& applicationId() {
    static const std::string& id =
        *new std::string(appinfoValue("id").value_or(fs::path(executable()).filename().string()));
    return id;
}

std::string dataFilePath(const std::string& name) {
    std::error_code problem;
    const fs::path beside = folderOfExecutable() / name;
    if (fs::exists(beside, problem)) {
        return beside.string();
    }
    // The id comes from a file; it names a folder, and not a way out of the user's.
    const fs::path folder = fs::path(g_get_user_data_dir()) / fs::path(applicationId()).filename();
    fs::create_directories(folder, problem);
    return (folder / name).string();
}

std::optional<std::string> portabilityValue(const std::string& key) {
    const char* value = g_getenv(("TAV_PORTABILITY_" + key).c_str());
    if (value != nullptr) {
        return value;
    }
    return memberOfFile(fs::path(g_get_user_config_dir()) / "libtav" / "portability.json", key);
}

}  // namespace tavlinux
