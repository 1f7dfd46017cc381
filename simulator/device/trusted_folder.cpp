#include "simulator/device/trusted_folder.h"

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "front/files.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr char kNotMade[] = ": the device's root folder cannot be made";
constexpr char kMachines[] = ": the device's files would be this machine's";
constexpr char kNotRead[] = ": cannot be read";
constexpr char kForeign[] = ": belongs to another user, who could change what the device does";
constexpr char kOpen[] =
    ": other users can write to it and change what the device does; take that from them "
    "(chmod go-w)";
constexpr char kLink[] = ": is a symbolic link, and the device follows none";

constexpr char kNoFile[] = ": is neither a file nor a folder";

// Everything that the device and the library use in the root folder, except the application's data.
constexpr const char* kUsed[] = {"/var",       "/usr",         "/proc",
                                 kDescription, kControlSocket, kPageSocket,
                                 kVerdict,     kRecordingMark, kRecording};

// The user, or root.
bool isTrusted(uid_t owner) {
    struct stat top;
    return owner == geteuid() || (stat("/", &top) == 0 && owner == top.st_uid);
}

bool canOthersWrite(const struct stat& status) {
    // Many users are the only member of a group with their own number.
    const bool isOwnGroup = geteuid() != 0 && getegid() == geteuid() && status.st_gid == getegid();
    const mode_t others = isOwnGroup ? S_IWOTH : S_IWOTH | S_IWGRP;
    return (status.st_mode & others) != 0;
}

// A symbolic link in the path counts as its target, but must not belong to another user.
std::string whyNotOnTheWay(const std::string& path, bool isRoot) {
    struct stat own;
    struct stat status;
    if (lstat(path.c_str(), &own) != 0 || stat(path.c_str(), &status) != 0) {
        return path + kNotRead;
    }
    if (!isTrusted(own.st_uid) || !isTrusted(status.st_uid)) {
        return path + kForeign;
    }
    // In a sticky folder such as /tmp, everybody can create files, but not replace those of others.
    const bool areOthersHarmless = !isRoot && (status.st_mode & S_ISVTX) != 0;
    return canOthersWrite(status) && !areOthersHarmless ? path + kOpen : std::string();
}

std::string whyNotInside(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return path + kNotRead;
    }
    if (S_ISLNK(status.st_mode)) {
        return path + kLink;
    }
    if (!isTrusted(status.st_uid)) {
        return path + kForeign;
    }
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) && !S_ISSOCK(status.st_mode)) {
        return path + kNoFile;
    }
    // A file that is not executed is only read, and its content is not trusted anyway.
    const bool isText = S_ISREG(status.st_mode) && (status.st_mode & (S_IXUSR | S_IXGRP)) == 0;
    return !isText && canOthersWrite(status) ? path + kOpen : std::string();
}

bool isThere(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

std::string whyNotUsed(const std::string& folder) {
    if (!isThere(folder)) {
        return {};
    }
    std::string reason = whyNotInside(folder);
    std::error_code problem;
    if (!fs::is_directory(folder, problem)) {
        return reason;
    }
    fs::recursive_directory_iterator at(folder, problem);
    for (const fs::recursive_directory_iterator end; reason.empty() && !problem && at != end;
         at.increment(problem)) {
        reason = whyNotInside(at->path().string());
    }
    return reason.empty() && problem ? folder + kNotRead : reason;
}

// Why the existing part of the root folder and of its path must not be used.
std::string whyNotTrusted(const std::string& root) {
    for (size_t end = 0; end != std::string::npos;) {
        const size_t next = root.find('/', end + 1);
        const std::string above = end == 0 ? "/" : root.substr(0, end);
        if (!isThere(above)) {
            return {};
        }
        if (std::string reason = whyNotOnTheWay(above, false); !reason.empty()) {
            return reason;
        }
        end = next;
    }
    std::string reason = isThere(root) ? whyNotOnTheWay(root, true) : std::string();
    if (reason.empty() && isThere(root + kDataFolder)) {
        reason = whyNotInside(root + kDataFolder);
    }
    for (const char* name : kUsed) {
        reason = reason.empty() ? whyNotUsed(root + name) : reason;
    }
    return reason;
}

}  // namespace

bool makeFolders(const std::string& path) {
    constexpr int kOnlyUserWrites = 0755;
    return g_mkdir_with_parents(path.c_str(), kOnlyUserWrites) == 0;
}

std::string makeTrustedRoot(const std::string& path) {
    if (path == "/" || front::isDevicePath(path.c_str())) {
        return path + kMachines;
    }
    if (std::string reason = whyNotTrusted(path); !reason.empty()) {
        return reason;
    }
    return makeFolders(path) ? whyNotTrusted(path) : path + kNotMade;
}

}  // namespace tavsim
