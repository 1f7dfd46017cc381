#include "simulator/device/root.h"

#include <atomic>
#include <filesystem>
#include <forward_list>

#include "base/file.h"
#include "front/files.h"
#include "front/host.h"
#include "simulator/device/claim.h"
#include "simulator/device/fresh_root.h"
#include "simulator/device/trusted_folder.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

// All root folders of the process are kept, because another thread may still read an earlier one's
// name.
const std::string& kept(std::string folder) {
    static auto& folders = *new std::forward_list<std::string>;
    return folders.emplace_front(std::move(folder));
}

std::atomic<const std::string*> g_folder = nullptr;  // null: there is no root folder
bool g_isFresh = false;

void setRoot(const std::string& folder, bool isFresh) {
    g_folder = &kept(folder);
    g_isFresh = isFresh;
}

bool exists(const std::string& path) {
    std::error_code problem;
    return fs::exists(path, problem);
}

bool writeFile(const std::string& path, const std::string& content) {
    return exists(path) || base::createFile(path, content);
}

bool writeFiles(const Profile& profile, std::string* error) {
    const std::string& base = rootFolder();
    const auto fail = [error](const std::string& path) {
        *error = path + ": cannot be made below the device's root";
        return false;
    };
    for (const char* folder : {"/var/kora/preferences", "/proc", front::kTemplates, kDataFolder}) {
        if (!makeFolders(base + folder)) {
            return fail(base + folder);
        }
    }
    const std::string database = base + front::kDatabase;
    if (profile.preferences && !exists(database) &&
        !front::createPreferences(database, *profile.preferences)) {
        return fail(database);
    }
    if (profile.uniqueId && !writeFile(base + front::kUniqueId, *profile.uniqueId + "\n")) {
        return fail(base + front::kUniqueId);
    }
    for (const auto& [name, content] : profile.templates) {
        const std::string path = base + front::kTemplates + "/" + name;
        if (!writeFile(path, content)) {
            return fail(path);
        }
    }
    return true;
}

bool takeFreshRoot(std::string* error) {
    const std::string folder = makeFreshRoot(kDeviceClaim);
    if (folder.empty()) {
        *error = freshRootsFolder() + ": the device's root folder cannot be made";
        return false;
    }
    setRoot(folder, true);
    return true;
}

bool takeRoot(const std::string& folder, std::string* error) {
    std::error_code problem;
    std::string path = fs::absolute(folder, problem).string();
    if (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    *error = makeTrustedRoot(path);
    if (!error->empty()) {
        return false;
    }
    if (claim(path, kDeviceClaim)) {
        setRoot(path, false);
        return true;
    }
    // A program that another program of the run started: two programs cannot be on one device.
    if (isClaimed(path, kRunClaim)) {
        return takeFreshRoot(error);
    }
    *error = folder + (isClaimed(path, kDeviceClaim) ? ": another program is running on this device"
                                                     : ": the folder cannot be written");
    return false;
}

}  // namespace

bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error) {
    releaseRoot();
    if (!(folder.empty() ? takeFreshRoot(error) : takeRoot(folder, error))) {
        return false;
    }
    return writeFiles(profile, error);
}

void releaseRoot() {
    const std::string& folder = rootFolder();
    if (!folder.empty() && (g_isFresh || !isClaimed(folder, kRunClaim))) {
        removeClaim(folder, kDeviceClaim);
    }
    if (g_isFresh) {
        removeFreshRoot(folder);
    }
    g_folder = nullptr;
    g_isFresh = false;
}

const std::string& rootFolder() {
    static const std::string& none = *new std::string;
    const std::string* folder = g_folder;
    return folder != nullptr ? *folder : none;
}

bool isRootFresh() {
    return g_isFresh;
}

std::map<std::string, std::string> storedPreferences() {
    return front::storedPreferences(rootFolder() + front::kDatabase);
}

bool storePreference(const std::string& key, const std::string& value) {
    return front::storePreference(rootFolder() + front::kDatabase, key, value);
}

}  // namespace tavsim
