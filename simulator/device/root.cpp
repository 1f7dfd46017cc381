#include "simulator/device/root.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "front/fixed_paths.h"
#include "front/next.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr char kData[] = "/data";
constexpr int kTriesForRoot = 10;

struct Root {
    std::string folder;
    bool isFresh = false;
};

Root& root() {
    static Root& instance = *new Root;
    return instance;
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
    static const auto open = front::nextFunction<int(const char*, sqlite3**)>("sqlite3_open");
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
    for (const char* folder : {"/var/kora/preferences", "/proc", front::kTemplates, kData}) {
        if (!makeFolder(base + folder)) {
            return fail(base + folder);
        }
    }
    if (profile.preferences && !writeDatabase(base + front::kDatabase, *profile.preferences)) {
        return fail(base + front::kDatabase);
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

std::string makeFreshRoot() {
    // Another run that ends can take the folder away in between.
    for (int tries = 0; tries < kTriesForRoot && makeFreshRootsFolder(); ++tries) {
        std::string path = freshRootsFolder() + "/" + std::to_string(getpid()) + "-XXXXXX";
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
    const DatabasePtr database = openDatabase(rootFolder() + front::kDatabase);
    return database != nullptr && execute(database.get(), storingStatement(key, value));
}

}  // namespace tavsim
