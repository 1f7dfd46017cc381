// The device's fixed paths, its rescan command and its user, in front of the real functions.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "helper/faults.h"
#include "platform/visibility.h"
#include "simulator/device/journal.h"
#include "simulator/device/next.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr std::string_view kRescanCommand = "/usr/bin/ks-control scan-services";
constexpr char kRescanProgram[] = "/usr/bin/ks-control";
constexpr char kUniqueId[] = "/proc/nduid";
constexpr uid_t kOrdinaryUser = 1000;

// Most paths are none of the device's; they must cost nothing and start nothing.
bool mayBeDevicePath(const char* path) {
    const std::string_view view = path != nullptr ? path : "";
    const bool hasPrefix = view.substr(0, 4) == "/var" || view.substr(0, 6) == "/usr/v" ||
                           view.substr(0, 8) == "/proc/nd";
    return hasPrefix && isWanted();
}

std::optional<std::string> fileOnDevice(const char* path) {
    if (!mayBeDevicePath(path)) {
        return std::nullopt;
    }
    running();
    return devicePath(path);
}

std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

long countFiles(const std::string& folder) {
    std::error_code problem;
    long count = 0;
    for (fs::directory_iterator at(folder, problem), end; !problem && at != end;
         at.increment(problem)) {
        ++count;
    }
    return count;
}

int rescan() {
    const std::string program = rootFolder() + kRescanProgram;
    if (access(program.c_str(), X_OK) == 0) {
        static const auto real = nextFunction<int(const char*)>("system");
        const int result = real((shellQuoted(program) + " scan-services").c_str());
        JournalEntry("bus", "rescan").member("program", program).member("status", result);
        return result;
    }
    const std::string roles = rootFolder() + "/var/vire/ks2/roles";
    const long found = countFiles(roles + "/pub") + countFiles(roles + "/prv");
    JournalEntry("bus", "rescan").member("roles", found).outcome("rescanned");
    return 0;
}

}  // namespace
}  // namespace tavsim

extern "C" {

TAV_PLATFORM_API FILE* fopen(const char* path, const char* mode) {
    static const auto real = tavsim::nextFunction<FILE*(const char*, const char*)>("fopen");
    const std::optional<std::string> mapped = tavsim::fileOnDevice(path);
    if (!mapped) {
        return real(path, mode);
    }
    const bool unreadable =
        std::string_view(path) == tavsim::kUniqueId && helper::faultStrikes(helper::Fault::Read);
    // A folder opens for reading, and then every read of it fails.
    return real(unreadable ? tavsim::rootFolder().c_str() : mapped->c_str(), mode);
}

TAV_PLATFORM_API int stat(const char* __restrict path, struct stat* __restrict status) noexcept {
    static const auto real = tavsim::nextFunction<int(const char*, struct stat*)>("stat");
    const std::optional<std::string> mapped = tavsim::fileOnDevice(path);
    return real(mapped ? mapped->c_str() : path, status);
}

TAV_PLATFORM_API int mkdir(const char* path, mode_t mode) noexcept {
    static const auto real = tavsim::nextFunction<int(const char*, mode_t)>("mkdir");
    if (!tavsim::mayBeDevicePath(path)) {
        return real(path, mode);
    }
    tavsim::running();
    const std::optional<std::string> mapped = tavsim::deviceFolderPath(path);
    return real(mapped ? mapped->c_str() : path, mode);
}

TAV_PLATFORM_API int system(const char* command) {
    static const auto real = tavsim::nextFunction<int(const char*)>("system");
    if (command == nullptr || command != tavsim::kRescanCommand || !tavsim::isWanted()) {
        return real(command);
    }
    tavsim::running();
    return tavsim::rescan();
}

TAV_PLATFORM_API uid_t getuid(void) noexcept {
    static const auto real = tavsim::nextFunction<uid_t()>("getuid");
    const uid_t user = real();
    if (!tavsim::isWanted()) {
        return user;
    }
    if (tavsim::running().root) {
        return 0;
    }
    return user != 0 ? user : tavsim::kOrdinaryUser;
}

TAV_PLATFORM_API int sqlite3_open(const char* path, sqlite3** database) {
    static const auto real = tavsim::nextFunction<int(const char*, sqlite3**)>("sqlite3_open");
    const std::optional<std::string> mapped = tavsim::fileOnDevice(path);
    return real(mapped ? mapped->c_str() : path, database);
}
}
