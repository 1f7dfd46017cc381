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
#include "simulator/device/claim.h"
#include "simulator/device/fresh_root.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr char kData[] = "/data";

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

bool takeFreshRoot(std::string* error) {
    root() = {makeFreshRoot(kDeviceClaim), true};
    if (root().folder.empty()) {
        *error = freshRootsFolder() + ": the device's root folder cannot be made";
    }
    return !root().folder.empty();
}

bool takeRoot(const std::string& folder, std::string* error) {
    std::error_code problem;
    std::string path = fs::absolute(folder, problem).string();
    if (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    if (!makeFolder(path)) {
        *error = folder + ": the device's root folder cannot be made";
        return false;
    }
    if (claim(path, kDeviceClaim)) {
        root() = {path, false};
        return true;
    }
    // A program that one of the run started: two cannot be on one device.
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
    if (root().isFresh) {
        removeFreshRoot(root().folder);
    } else if (!root().folder.empty() && !isClaimed(root().folder, kRunClaim)) {
        removeClaim(root().folder, kDeviceClaim);
    }
    root() = {};
}

const std::string& rootFolder() {
    return root().folder;
}

bool isRootFresh() {
    return root().isFresh;
}

bool storePreference(const std::string& key, const std::string& value) {
    const DatabasePtr database = openDatabase(rootFolder() + front::kDatabase);
    return database != nullptr && execute(database.get(), storingStatement(key, value));
}

}  // namespace tavsim
