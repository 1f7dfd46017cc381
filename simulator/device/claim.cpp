#include "simulator/device/claim.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <map>
#include <optional>
#include <thread>

namespace tavsim {
namespace {

constexpr int kTriesToLock = 200;
constexpr std::chrono::milliseconds kBetweenTries(10);

// What keeps this process's claims locked: by their paths, a page of each of their files.
std::map<std::string, void*>& ownPages() {
    static auto& pages = *new std::map<std::string, void*>;
    return pages;
}

// Process numbers mean nothing in another namespace, such as a container that shares /tmp.
std::string processNamespace() {
    char text[PATH_MAX];
    const ssize_t length = readlink("/proc/self/ns/pid", text, sizeof text);
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

struct flock wholeFile() {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    return lock;
}

std::string ownName() {
    return std::to_string(getpid()) + ' ' + processNamespace() + '\n';
}

// What is in a claim that a process holds; nothing when none does. If that cannot be found out, for
// example without a free descriptor, a process holds it that is not known.
std::optional<std::string> heldClaim(int folder, const char* path) {
    const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const int opened = openat(folder, path, flags);
    if (opened < 0) {
        return errno == EMFILE || errno == ENFILE ? std::optional<std::string>("") : std::nullopt;
    }
    const base::Descriptor file(opened);
    struct flock lock = wholeFile();
    if (fcntl(file.number(), F_OFD_GETLK, &lock) == 0 && lock.l_type == F_UNLCK) {
        return std::nullopt;
    }
    char text[PATH_MAX];
    const ssize_t length = read(file.number(), text, sizeof text);
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

// The kernel keeps the lock for as long as the file is mapped, which ends with the process or when
// it executes another program. A child process does not get the mapping.
void* lockedPage(int file) {
    struct flock lock = wholeFile();
    if (!base::writeAll(file, ownName()) || fcntl(file, F_OFD_SETLK, &lock) != 0) {
        return MAP_FAILED;
    }
    void* page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE, file, 0);
    if (page != MAP_FAILED) {
        madvise(page, 1, MADV_DONTFORK);
    }
    return page;
}

bool isSameFolder(int descriptor, const std::string& path) {
    struct stat own;
    struct stat there;
    return fstat(descriptor, &own) == 0 && stat(path.c_str(), &there) == 0 &&
           own.st_dev == there.st_dev && own.st_ino == there.st_ino;
}

}  // namespace

LockedFolder::LockedFolder(const std::string& path)
    : m_folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    for (int tries = 0; m_folder.isOurs() && flock(m_folder.number(), LOCK_EX | LOCK_NB) != 0;
         ++tries) {
        if (tries == kTriesToLock) {
            m_folder = {};
            return;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    // There is a race: the last holder of the lock may have removed the folder, and another process
    // may have created it again.
    if (!isSameFolder(m_folder.number(), path)) {
        m_folder = {};
    }
}

bool claim(const std::string& folder, const char* name) {
    const LockedFolder locked(folder);
    if (const auto holder = heldClaim(locked.descriptor(), name)) {
        return *holder == ownName();
    }
    unlinkat(locked.descriptor(), name, 0);
    const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    const base::Descriptor file(openat(locked.descriptor(), name, flags, S_IRUSR | S_IWUSR));
    void* page = file.isOurs() ? lockedPage(file.number()) : MAP_FAILED;
    if (page == MAP_FAILED) {
        unlinkat(locked.descriptor(), name, 0);
        return false;
    }
    ownPages()[folder + "/" + name] = page;
    return true;
}

void removeClaim(const std::string& folder, const char* name) {
    const LockedFolder locked(folder);
    const auto holder = heldClaim(locked.descriptor(), name);
    if (holder && holder != ownName()) {
        return;
    }
    unlinkat(locked.descriptor(), name, 0);
    if (auto own = ownPages().extract(folder + "/" + name); holder && own) {
        munmap(own.mapped(), 1);
    }
}

bool isClaimed(const std::string& folder, const char* name) {
    return heldClaim(AT_FDCWD, (folder + "/" + name).c_str()).has_value();
}

pid_t claimant(const std::string& folder, const char* name) {
    const std::string holder = heldClaim(AT_FDCWD, (folder + "/" + name).c_str()).value_or("");
    const bool isHere = holder.ends_with(' ' + processNamespace() + '\n');
    return isHere ? static_cast<pid_t>(std::strtol(holder.c_str(), nullptr, 10)) : 0;
}

}  // namespace tavsim
