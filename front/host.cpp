#include "front/host.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "base/file.h"
#include "base/json/text.h"
#include "front/next.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"

namespace front {
namespace {

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using DatabasePtr = std::unique_ptr<sqlite3, DatabaseCloser>;

bool execute(const DatabasePtr& database, const std::string& statements) {
    return sqlite3_exec(database.get(), statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

// No syncs: it is written anew where the machine has lost it.
DatabasePtr openDatabase(const std::string& path) {
    static const auto open = nextFunction<int(const char*, sqlite3**)>("sqlite3_open");
    sqlite3* opened = nullptr;
    const int result = open(path.c_str(), &opened);
    DatabasePtr database(opened);
    const bool isOpen =
        result == SQLITE_OK &&
        execute(database, "PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY;");
    return isOpen ? std::move(database) : nullptr;
}

std::string storingStatement(const std::string& key, const std::string& value) {
    const std::unique_ptr<char, decltype(&sqlite3_free)> statement(
        sqlite3_mprintf("REPLACE INTO Preferences VALUES (%Q, %Q);", key.c_str(), value.c_str()),
        sqlite3_free);
    return statement != nullptr ? statement.get() : throw std::bad_alloc();
}

}  // namespace

int answerLookUp(const std::string* value, char* buffer, int bufferLength) {
    const bool hasRoom = buffer != nullptr && bufferLength > 0;
    if (hasRoom) {
        buffer[0] = '\0';
    }
    if (value == nullptr) {
        return NAPP_NO_SUCH_VALUE;
    }
    if (!hasRoom || value->size() >= static_cast<size_t>(bufferLength)) {
        return NAPP_BUFFER_TOO_SMALL;
    }
    std::memcpy(buffer, value->c_str(), value->size() + 1);
    return NAPP_SUCCESS;
}

bool findMember(const char* json, const char* member, std::optional<std::string>* value) {
    static auto& parser = *new simdjson::dom::parser;
    simdjson::dom::element root;
    simdjson::dom::object object;
    if (json == nullptr || member == nullptr || !base::parse(parser, json, false, &root) ||
        root.get(object) != simdjson::SUCCESS) {
        return false;
    }
    const auto found = base::memberOf<simdjson::dom::element>(object, member);
    *value = found ? std::optional(base::textOf(*found)) : std::nullopt;
    return true;
}

// All rows in one transaction.
bool createPreferences(const std::string& path,
                       const std::map<std::string, std::string>& preferences) {
    const DatabasePtr database = openDatabase(path);
    std::string statements = "BEGIN; CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE TEXT);";
    for (const auto& [key, value] : preferences) {
        statements += storingStatement(key, value);
    }
    return database != nullptr && execute(database, statements + "COMMIT;");
}

bool storePreference(const std::string& path, const std::string& key, const std::string& value) {
    const DatabasePtr database = openDatabase(path);
    return database != nullptr && execute(database, storingStatement(key, value));
}

std::map<std::string, std::string> storedPreferences(const std::string& path) {
    std::map<std::string, std::string> preferences;
    // Opening a database that is not there would create it.
    const DatabasePtr database = base::whyNoFile(path).empty() ? openDatabase(path) : nullptr;
    char** cells = nullptr;
    int rows = 0;
    if (database == nullptr ||
        sqlite3_get_table(database.get(),
                          "SELECT KEY, VALUE FROM Preferences WHERE VALUE IS NOT NULL;", &cells,
                          &rows, nullptr, nullptr) != SQLITE_OK) {
        return preferences;
    }
    const std::unique_ptr<char*, decltype(&sqlite3_free_table)> table(cells, sqlite3_free_table);
    for (ptrdiff_t row = 1; row <= rows; ++row) {  // the first one holds the names of the columns
        preferences.emplace(cells[2 * row], cells[2 * row + 1]);
    }
    return preferences;
}

}  // namespace front

HKSCaller* NApp_GetKSCaller() {
    static HKSCaller caller;
    return &caller;
}
