#include "simulator/device/fresh_root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "base/file.h"
#include "simulator/device/claim.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr int kTries = 100;

// In a temporary folder that everybody can write to, another user may have taken the name.
bool isOwnFolder(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

void removeStaleRoots(const std::string& parent) {
    for (const std::string& path : base::entriesOf(parent)) {
        if (!isClaimed(path, kRunClaim) && !isClaimed(path, kDeviceClaim)) {
            std::error_code problem;
            fs::remove_all(path, problem);
        }
    }
}

}  // namespace

std::string freshRootsFolder() {
    std::error_code problem;
    const fs::path temporary = fs::temp_directory_path(problem);
    return (problem ? "/tmp" : temporary.string()) + "/tavsim-" + std::to_string(geteuid());
}

bool makeFreshRootsFolder() {
    const std::string folder = freshRootsFolder();
    std::error_code problem;
    fs::create_directories(folder, problem);
    if (!isOwnFolder(folder)) {
        return false;
    }
    fs::permissions(folder, fs::perms::owner_all, problem);
    return true;
}

std::string makeFreshRoot(const char* claimName) {
    const std::string parent = freshRootsFolder();
    // There is a race: another run that ends may remove the parent folder at any moment.
    for (int tries = 0; tries < kTries; ++tries) {
        if (!makeFreshRootsFolder()) {
            continue;
        }
        // While this lock is held, no folder is just being created, so one without a claim is
        // stale.
        const LockedFolder locked(parent);
        if (locked.descriptor() < 0) {
            continue;
        }
        removeStaleRoots(parent);
        std::string path = parent + "/" + std::to_string(getpid()) + "-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            continue;
        }
        if (claim(path, claimName)) {
            return path;
        }
        std::error_code problem;
        fs::remove_all(path, problem);
    }
    return {};
}

void removeFreshRoot(const std::string& path) {
    // Locked, so that no other process removes it as a stale folder at the same time.
    const fs::path parent = fs::path(path).parent_path();
    const LockedFolder locked(parent);
    std::error_code problem;
    fs::remove_all(path, problem);
    if (locked.descriptor() >= 0) {
        removeStaleRoots(parent);
        // Fails if it contains the folders of other runs.
        fs::remove(parent, problem);
    }
}

}  // namespace tavsim
