// Where the device's files are on this system: in the user's run-time folder, made at first need.
// Where nothing can be written there, they are below the folder for temporary files.
#include "front/files.h"

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
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

bool makeFiles(const fs::path& folder) {
    const std::string suffix = "." + std::to_string(getpid());
    const fs::path database = folder / fs::path(front::kDatabase).relative_path();
    const fs::path uniqueIdFile = folder / fs::path(front::kUniqueId).relative_path();
    std::error_code problem;
    fs::create_directories(database.parent_path(), problem);
    fs::create_directories(uniqueIdFile.parent_path(), problem);
    if (access(uniqueIdFile.parent_path().c_str(), W_OK) != 0) {
        return false;
    }
    fs::remove(database.string() + suffix, problem);
    replace(database, writePreferences(database.string() + suffix));
    const std::optional<std::string> id = uniqueId(applicationId());
    const bool isWritten = id && g_file_set_contents((uniqueIdFile.string() + suffix).c_str(),
                                                     (*id + "\n").c_str(), -1, nullptr) != FALSE;
    replace(uniqueIdFile, isWritten);
    return true;
}

// A folder for temporary files is everyone's: what stands in it must be this user's own.
fs::path ownTemporaryFolder() {
    fs::path folder = g_get_tmp_dir() + ("/libtav-" + std::to_string(geteuid()));
    mkdir(folder.c_str(), S_IRWXU);
    struct stat found = {};
    const bool isOwn = lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
                       found.st_uid == geteuid() && (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return isOwn ? folder : front::kNowhere;
}

fs::path makeDeviceFolder() {
    const fs::path own = fs::path("libtav") / fs::path(applicationId()).filename();
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

std::optional<std::string> placeOf(const char* devicePath) {
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

// There is no bus whose roles could be read again.
std::optional<int> rescan(int (*)(const char*)) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    return tavlinux::isInFront() ? 0 : -1;
}

}  // namespace front
