#include "simulator/device/root.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>

#include "simulator/device/next.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";
constexpr char kUniqueId[] = "/proc/nduid";
constexpr char kRoles[] = "/var/vire/ks2/roles";
constexpr char kTemplates[] = "/usr/vire/ks2/templates";
constexpr char kData[] = "/data";
constexpr int kTriesForRoot = 10;
constexpr std::string_view kFoldersAbove[] = {"/var", "/var/vire", "/var/vire/ks2"};

struct Root {
    std::string folder;
    bool isFresh = false;
};

Root& root() {
    static Root& instance = *new Root;
    return instance;
}

bool isBelow(std::string_view path, std::string_view folder) {
    return path.substr(0, folder.size()) == folder &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

bool writeFile(const std::string& path, const std::string& content) {
    if (fs::exists(path)) {
        return true;
    }
    std::ofstream file(path, std::ios::binary);
    file << content;
    return file.flush().good();
}

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

using DatabasePtr = std::unique_ptr<sqlite3, DatabaseCloser>;

DatabasePtr openDatabase(const std::string& path) {
    static const auto open = nextFunction<int(const char*, sqlite3**)>("sqlite3_open");
    sqlite3* opened = nullptr;
    const int result = open(path.c_str(), &opened);
    DatabasePtr database(opened);
    return result == SQLITE_OK ? std::move(database) : nullptr;
}

bool execute(sqlite3* database, const std::string& statements) {
    return sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string storingStatement(const std::string& key, const std::string& value) {
    const std::unique_ptr<char, decltype(&sqlite3_free)> statement(
        sqlite3_mprintf("REPLACE INTO Preferences VALUES (%Q, %Q);", key.c_str(), value.c_str()),
        sqlite3_free);
    return statement.get();
}

// One row a preference, all in one transaction.
bool writeDatabase(const std::string& path, const std::map<std::string, std::string>& preferences) {
    if (fs::exists(path)) {
        return true;
    }
    const DatabasePtr database = openDatabase(path);
    std::string statements = "BEGIN; CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE TEXT);";
    for (const auto& [key, value] : preferences) {
        statements += storingStatement(key, value);
    }
    return database != nullptr && execute(database.get(), statements + "COMMIT;");
}

// In a temporary folder that everybody writes to, somebody else may have taken the name.
bool isOwnFolder(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

bool makeFolder(const std::string& path) {
    std::error_code problem;
    fs::create_directories(path, problem);
    return fs::is_directory(path, problem);
}

bool writeFiles(const Profile& profile, std::string* error) {
    const std::string& base = root().folder;
    const auto fail = [error](const std::string& path) {
        *error = path + ": cannot be made below the device's root";
        return false;
    };
    for (const char* folder : {"/var/kora/preferences", "/proc", kTemplates, kData}) {
        if (!makeFolder(base + folder)) {
            return fail(base + folder);
        }
    }
    if (profile.preferences && !writeDatabase(base + kDatabase, *profile.preferences)) {
        return fail(base + kDatabase);
    }
    if (profile.uniqueId && !writeFile(base + kUniqueId, *profile.uniqueId + "\n")) {
        return fail(base + kUniqueId);
    }
    for (const auto& [name, content] : profile.templates) {
        const std::string path = base + kTemplates + "/" + name;
        if (!writeFile(path, content)) {
            return fail(path);
        }
    }
    return true;
}

}  // namespace

bool prepareRoot(const Profile& profile, const std::string& folder, std::string* error) {
    releaseRoot();
    std::error_code problem;
    root().isFresh = folder.empty();
    root().folder = folder.empty() ? makeFreshRoot() : fs::absolute(folder, problem).string();
    if (root().folder.size() > 1 && root().folder.back() == '/') {
        root().folder.pop_back();
    }
    if (root().folder.empty() || !makeFolder(root().folder)) {
        *error = (folder.empty() ? freshRootsFolder() : folder) +
                 ": the device's root folder cannot be made";
        return false;
    }
    return writeFiles(profile, error);
}

void releaseRoot() {
    if (root().isFresh) {
        removeFreshRoot(root().folder);
    }
    root() = {};
}

const std::string& rootFolder() {
    return root().folder;
}

std::string makeFreshRoot() {
    const std::string parent = freshRootsFolder();
    // Another run that ends can take the parent away in between.
    for (int tries = 0; tries < kTriesForRoot; ++tries) {
        std::error_code problem;
        fs::create_directories(parent, problem);
        if (!isOwnFolder(parent)) {
            return {};
        }
        fs::permissions(parent, fs::perms::owner_all, problem);
        std::string path = parent + "/" + std::to_string(getpid()) + "-XXXXXX";
        if (mkdtemp(path.data()) != nullptr) {
            return path;
        }
    }
    return {};
}

void removeFreshRoot(const std::string& path) {
    if (path.empty()) {
        return;
    }
    std::error_code problem;
    fs::remove_all(path, problem);
    // Stays where it holds the folders of other runs.
    fs::remove(fs::path(path).parent_path(), problem);
}

std::string freshRootsFolder() {
    std::error_code problem;
    const fs::path temporary = fs::temp_directory_path(problem);
    return (problem ? "/tmp" : temporary.string()) + "/tavsim-" + std::to_string(geteuid());
}

bool storePreference(const std::string& key, const std::string& value) {
    const DatabasePtr database = openDatabase(rootFolder() + kDatabase);
    return database != nullptr && execute(database.get(), storingStatement(key, value));
}

std::optional<std::string> devicePath(const char* path) {
    const std::string_view view = path;
    const bool isOurs = view == kDatabase || view == kUniqueId || isBelow(view, kRoles) ||
                        isBelow(view, kTemplates);
    if (!isOurs) {
        return std::nullopt;
    }
    return root().folder + path;
}

std::optional<std::string> deviceFolderPath(const char* path) {
    for (const std::string_view folder : kFoldersAbove) {
        if (path == folder) {
            return root().folder + path;
        }
    }
    return devicePath(path);
}

}  // namespace tavsim
