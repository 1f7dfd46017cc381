#include "simulator/device/root.h"

#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <forward_list>
#include <memory>
#include <new>

#include "base/file.h"
#include "front/fixed_paths.h"
#include "front/next.h"
#include "simulator/device/claim.h"
#include "simulator/device/fresh_root.h"
#include "simulator/device/trusted_folder.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr char kData[] = "/data";

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

bool isThere(const std::string& path) {
    std::error_code problem;
    return fs::exists(path, problem);
}

bool writeFile(const std::string& path, const std::string& content) {
    return isThere(path) || base::createFile(path, content);
}

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

using DatabasePtr = std::unique_ptr<sqlite3, DatabaseCloser>;

bool execute(sqlite3* database, const std::string& statements) {
    return sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

// No syncs: a simulated device need not survive a power cut.
DatabasePtr openDatabase(const std::string& path) {
    static const auto open = front::nextFunction<int(const char*, sqlite3**)>("sqlite3_open");
    sqlite3* opened = nullptr;
    const int result = open(path.c_str(), &opened);
    DatabasePtr database(opened);
    const bool isOpen = result == SQLITE_OK &&
                        execute(opened, "PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY;");
    return isOpen ? std::move(database) : nullptr;
}

std::string storingStatement(const std::string& key, const std::string& value) {
    const std::unique_ptr<char, decltype(&sqlite3_free)> statement(
        sqlite3_mprintf("REPLACE INTO Preferences VALUES (%Q, %Q);", key.c_str(), value.c_str()),
        sqlite3_free);
    return statement != nullptr ? statement.get() : throw std::bad_alloc();
}

// One row a preference, all in one transaction.
bool writeDatabase(const std::string& path, const std::map<std::string, std::string>& preferences) {
    if (isThere(path)) {
        return true;
    }
    const DatabasePtr database = openDatabase(path);
    std::string statements = "BEGIN; CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE TEXT);";
    for (const auto& [key, value] : preferences) {
        statements += storingStatement(key, value);
    }
    return database != nullptr && execute(database.get(), statements + "COMMIT;");
}

bool writeFiles(const Profile& profile, std::string* error) {
    const std::string& base = rootFolder();
    const auto fail = [error](const std::string& path) {
        *error = path + ": cannot be made below the device's root";
        return false;
    };
    for (const char* folder : {"/var/kora/preferences", "/proc", front::kTemplates, kData}) {
        if (!makeFolders(base + folder)) {
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
    if (g_isFresh) {
        removeFreshRoot(folder);
    } else if (!folder.empty() && !isClaimed(folder, kRunClaim)) {
        removeClaim(folder, kDeviceClaim);
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

bool storePreference(const std::string& key, const std::string& value) {
    const DatabasePtr database = openDatabase(rootFolder() + front::kDatabase);
    return database != nullptr && execute(database.get(), storingStatement(key, value));
}

}  // namespace tavsim
