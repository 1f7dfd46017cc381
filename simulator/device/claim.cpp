#include "simulator/device/claim.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <sstream>
#include <thread>

extern "C" {  // which the header itself lacks
#include <sys/pidfd.h>
}

#include "base/file.h"

namespace tavsim {
namespace {

constexpr size_t kMostBytes = 1 << 14;
constexpr int kTriesToLock = 200;
constexpr std::chrono::milliseconds kBetweenTries(10);
constexpr int kStartTime = 22;  // the field of /proc/PID/stat
constexpr char kUnknown[] = "?";

std::string readLink(int folder, const char* name) {
    char text[PATH_MAX];
    const ssize_t length = readlinkat(folder, name, text, sizeof text);
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

// When the process started. A later process with the same number has another start time. Read
// through the first thread's entry, because an emulator may fake what a process reads about itself.
std::string startTime(pid_t process) {
    const std::string number = std::to_string(process);
    std::string error;
    const std::string path = "/proc/" + number + "/task/" + number + "/stat";
    const std::string text = base::readFile(path, kMostBytes, &error).value_or("");
    // The second field is a name in parentheses, which may contain any characters.
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string field;
    for (int n = 2; n < kStartTime; ++n) {
        fields >> field;
    }
    return fields ? field : kUnknown;
}

// Process numbers mean nothing in another namespace, such as a container that shares /tmp.
std::string processNamespace() {
    return readLink(AT_FDCWD, "/proc/self/ns/pid");
}

std::string nameOf(pid_t process) {
    return std::to_string(process) + ' ' + startTime(process) + ' ' + processNamespace();
}

// The process that a claim names, if it is well-formed.
pid_t namedIn(const std::string& text) {
    return static_cast<pid_t>(std::strtol(text.c_str(), nullptr, 10));
}

bool hasEnded(const base::Descriptor& process) {
    pollfd ready{process.number(), POLLIN, 0};
    return poll(&ready, 1, 0) > 0;
}

// If this cannot be found out, for example without a free descriptor, the process counts as alive.
bool lives(const std::string& text) {
    const std::string space = text.substr(text.rfind(' ') + 1);
    if (text.empty() || space != processNamespace()) {
        return !text.empty();
    }
    const int opened = pidfd_open(namedIn(text), 0);
    if (opened < 0) {
        return errno != ESRCH && errno != EINVAL && errno != ENOENT;
    }
    const base::Descriptor process(opened);
    const std::string now = nameOf(namedIn(text));
    const bool isKnown = (text + now).find(kUnknown) == std::string::npos;
    return !hasEnded(process) && (text == now || !isKnown);
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
    const std::string before = readLink(locked.descriptor(), name);
    const std::string own = nameOf(getpid());
    if (before == own) {
        return true;
    }
    if (lives(before)) {
        return false;
    }
    unlinkat(locked.descriptor(), name, 0);
    return symlinkat(own.c_str(), locked.descriptor(), name) == 0;
}

void removeClaim(const std::string& folder, const char* name) {
    const LockedFolder locked(folder);
    const std::string there = readLink(locked.descriptor(), name);
    if (!lives(there) || there == nameOf(getpid())) {
        unlinkat(locked.descriptor(), name, 0);
    }
}

bool isClaimed(const std::string& folder, const char* name) {
    return lives(readLink(AT_FDCWD, (folder + "/" + name).c_str()));
}

pid_t claimant(const std::string& folder, const char* name) {
    const std::string there = readLink(AT_FDCWD, (folder + "/" + name).c_str());
    const bool isHere = there.ends_with(' ' + processNamespace());
    return isHere && lives(there) ? namedIn(there) : 0;
}

}  // namespace tavsim
