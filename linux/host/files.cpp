// Where the device's files are on this system: in the user's run-time folder, made at first need.
// Where nothing can be written there, they are below the folder for temporary files.
#include "front/files.h"

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "base/file.h"
#include "front/next.h"
#include "linux/application/application.h"
#include "linux/host/in_front.h"
#include "linux/host/settings.h"

namespace fs = std::filesystem;

namespace tavlinux {
namespace {

bool makeFiles(const fs::path& folder) {
    const fs::path database = folder / fs::path(front::kDatabase).relative_path();
    const fs::path uniqueIdFile = folder / fs::path(front::kUniqueId).relative_path();
    std::error_code problem;
    fs::create_directories(database.parent_path(), problem);
    fs::create_directories(uniqueIdFile.parent_path(), problem);
    if (access(uniqueIdFile.parent_path().c_str(), W_OK) != 0) {
        return false;
    }
    // Another process of the same application may make its files at the same time.
    const fs::path made = database.string() + "." + std::to_string(getpid());
    fs::remove(made, problem);
    if (writePreferences(made)) {
        fs::rename(made, database, problem);
    }
    fs::remove(made, problem);
    std::string error;
    if (const std::optional<std::string> id = uniqueId(applicationId())) {
        base::writeFile(uniqueIdFile, *id + "\n", &error);
    }
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

// There is no bus whose roles could be read again.
std::optional<int> rescan(int (*)(const char*)) {
    if (!usesLibrary()) {
        return std::nullopt;
    }
    return tavlinux::isInFront() ? 0 : -1;
}

}  // namespace front
