// Uses the device's fixed paths with every function that a program might use, and names those that
// fail. Compiled twice: plainly, and with 64-bit file offsets and _FORTIFY_SOURCE.
#include <dirent.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "tav.h"

namespace {

constexpr char kFile[] = "/proc/nduid";
constexpr char kFolder[] = "/usr/vire/ks2/templates";
constexpr char kMissing[] = "/var/vire/ks2/roles/pub/none";
constexpr char kWayOut[] = "/usr/vire/ks2/templates/../../../../../../../../../../../etc/passwd";
constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";

// Not a constant, so that _FORTIFY_SOURCE makes a checked call of it.
volatile int g_reading = O_RDONLY;

bool closes(int file) {
    return file >= 0 && close(file) == 0;
}

bool closes(FILE* file) {
    return file != nullptr && std::fclose(file) == 0;
}

bool closes(DIR* folder) {
    return folder != nullptr && closedir(folder) == 0;
}

// A change also creates SQLite's journal file beside the database.
bool opensForChanges(int flags) {
    sqlite3* database = nullptr;
    const int result = flags == 0 ? sqlite3_open(kDatabase, &database)
                                  : sqlite3_open_v2(kDatabase, &database, flags, nullptr);
    constexpr char kChange[] = "CREATE TABLE Probe (X); DROP TABLE Probe";
    const int changed = sqlite3_exec(database, kChange, nullptr, nullptr, nullptr);
    return result == SQLITE_OK && changed == SQLITE_OK && sqlite3_close(database) == SQLITE_OK;
}

bool canBeWrittenAndRemoved() {
    bool works = true;
    for (const char* folder : {"/var/vire", "/var/vire/ks2", "/var/vire/ks2/roles"}) {
        works &= mkdir(folder, 0700) == 0;
    }
    const std::string path = "/var/vire/ks2/roles/file";
    std::error_code problem;
    for (const auto& take : {unlink, remove}) {
        std::ofstream(path) << "text";
        works &= std::filesystem::file_size(path, problem) == 4 && take(path.c_str()) == 0;
    }
    return works && !std::filesystem::exists(path, problem);
}

bool filesystemKnows() {
    std::error_code problem;
    return std::filesystem::exists(kFile, problem) &&
           !std::filesystem::is_empty(kFolder, problem) && !problem;
}

struct stat g_status;
struct statx g_statx;

const std::pair<const char*, bool (*)()> kWays[] = {
    {"fopen", [] { return closes(std::fopen(kFile, "r")); }},
    {"open", [] { return closes(open(kFile, O_RDONLY)); }},
    {"open, checked", [] { return closes(open(kFile, g_reading)); }},
    {"openat", [] { return closes(openat(AT_FDCWD, kFile, O_RDONLY)); }},
    {"openat, checked", [] { return closes(openat(AT_FDCWD, kFile, g_reading)); }},
    {"access", [] { return access(kFile, R_OK) == 0; }},
    {"stat", [] { return stat(kFile, &g_status) == 0 && g_status.st_size > 0; }},
    {"lstat", [] { return lstat(kFile, &g_status) == 0 && g_status.st_size > 0; }},
    {"fstatat", [] { return fstatat(AT_FDCWD, kFolder, &g_status, 0) == 0; }},
    {"statx", [] { return statx(AT_FDCWD, kFile, 0, STATX_SIZE, &g_statx) == 0; }},
    {"ifstream", [] { return std::ifstream(kFile).is_open(); }},
    {"filesystem", filesystemKnows},
    {"opendir", [] { return closes(opendir(kFolder)); }},
    {"sqlite3_open", [] { return opensForChanges(0); }},
    {"sqlite3_open_v2", [] { return opensForChanges(SQLITE_OPEN_READWRITE); }},
    {"mkdir, unlink, remove", canBeWrittenAndRemoved},
    {"missing", [] { return access(kMissing, F_OK) != 0; }},
    {"a way out", [] { return access(kWayOut, F_OK) != 0; }},
    {"the machine's own", [] { return closes(open("/proc/self/maps", O_RDONLY)); }},
};

}  // namespace

int main() {
    int failures = 0;
    // The paths must be redirected even before the library's first call.
    for (const auto& [name, works] : kWays) {
        if (!works()) {
            std::printf("%s: %s\n", name, std::strerror(errno));
            ++failures;
        }
    }
    return TAV_GetKOBVersion() > 0 && failures == 0 ? 0 : 1;
}
