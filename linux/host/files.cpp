// Where the device's files are on this system: in the user's run-time folder, made at first need.
#include "front/files.h"

#include <glib.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <string>

#include "front/fixed_paths.h"
#include "front/in_front.h"
#include "linux/application/application.h"
#include "linux/application/machine.h"
#include "linux/host/in_front.h"
#include "linux/host/settings.h"

namespace fs = std::filesystem;

namespace tavlinux {
namespace {

// Another process of the same application may make its files at the same time.
void replace(const fs::path& file, bool isMade) {
    const fs::path made = file.string() + "." + std::to_string(getpid());
    std::error_code problem;
    if (isMade) {
        fs::rename(made, file, problem);
    }
    fs::remove(isMade ? fs::path() : made, problem);
}

void makeFiles(const fs::path& folder) {
    const std::string suffix = "." + std::to_string(getpid());
    const fs::path database = folder / fs::path(front::kDatabase).relative_path();
    const fs::path uniqueIdFile = folder / fs::path(front::kUniqueId).relative_path();
    std::error_code problem;
    fs::create_directories(database.parent_path(), problem);
    fs::create_directories(uniqueIdFile.parent_path(), problem);
    fs::remove(database.string() + suffix, problem);
    replace(database, writePreferences(database.string() + suffix));
    const std::optional<std::string> id = uniqueId(applicationId());
    const bool isWritten = id && g_file_set_contents((uniqueIdFile.string() + suffix).c_str(),
                                                     (*id + "\n").c_str(), -1, nullptr) != FALSE;
    replace(uniqueIdFile, isWritten);
}

fs::path deviceFolder() {
    return fs::path(g_get_user_runtime_dir()) / "libtav" / fs::path(applicationId()).filename();
}

}  // namespace
}  // namespace tavlinux

namespace front {

std::optional<std::string> placeOf(const char* devicePath) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    if (!tavlinux::isInFront()) {
        return kNowhere;
    }
    static std::once_flag& isMade = *new std::once_flag;
    const fs::path folder = tavlinux::deviceFolder();
    std::call_once(isMade, tavlinux::makeFiles, folder);
    return folder.string() + devicePath;
}

uid_t deviceUser(uid_t realUser) {
    return realUser;
}

// There is no bus whose roles could be read again.
std::optional<int> rescan(int (*)(const char*)) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    return tavlinux::isInFront() ? 0 : -1;
}

}  // namespace front
