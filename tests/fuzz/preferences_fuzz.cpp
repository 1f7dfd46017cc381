// The device's name and the preferences that are JSON objects, straight from the database. Input:
// the buffer's length in a byte, the value's type and the query in another, and the value.
#include <sqlite3.h>

#include <iterator>

#include "fuzz.h"
#include "tav.h"

using tavfuzz::expect;

namespace {

constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";

enum class Type { Text, Blob, Null, Integer, NoRow };
constexpr unsigned kTypes = 5;

sqlite3* g_database = nullptr;
sqlite3_stmt* g_delete = nullptr;
sqlite3_stmt* g_insert = nullptr;

sqlite3_stmt* prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    expect(sqlite3_prepare_v2(g_database, text, -1, &statement, nullptr) == SQLITE_OK,
           "the database understands");
    return statement;
}

void run(sqlite3_stmt* statement) {
    expect(sqlite3_step(statement) == SQLITE_DONE, "the database does as it is told");
    sqlite3_reset(statement);
}

// The value under all three keys.
void store(Type type, const std::string& value) {
    run(g_delete);
    if (type == Type::NoRow) {
        return;
    }
    const int size = static_cast<int>(value.size());
    switch (type) {
    case Type::Text:
        sqlite3_bind_text(g_insert, 1, value.data(), size, SQLITE_STATIC);
        break;
    case Type::Blob:
        sqlite3_bind_blob(g_insert, 1, value.data(), size, SQLITE_STATIC);
        break;
    case Type::Integer:
        sqlite3_bind_int64(g_insert, 1, size);
        break;
    default:
        sqlite3_bind_null(g_insert, 1);
        break;
    }
    run(g_insert);
}

void checkName(int length, Type type, const std::string& value) {
    tavfuzz::Buffer buffer(length);
    const int code = TAV_GetDeviceName(buffer.data(), buffer.length());
    buffer.expectGuards();
    expect(code == TAV_NOERROR || code == TAV_EDATAACCESS || code == TAV_EOTHER ||
               code == TAV_STRINGTOOSMALL || code == TAV_INVALIDINPUT,
           "a failure has one of its codes");
    expect(code == TAV_NOERROR || buffer.isUntouched(), "a failure leaves the buffer alone");
    if (code != TAV_NOERROR || type != Type::Text) {
        return;
    }
    const std::string name(buffer.text());
    const std::string stored = value.c_str();
    expect(stored == name || stored == '"' + name + '"' || (stored == "\"" && name.empty()),
           "the name is the stored text, without quotes around it");
}

using Query = int (*)(char*, int);

constexpr Query kObjectQueries[] = {TAV_GetRegionCountryCode, TAV_GetRegionCountryName,
                                    TAV_GetLanguage};

// Length 0 aside, the buffer always holds a text afterwards or what it held before.
void checkObject(Query query, int length) {
    tavfuzz::Buffer buffer(length);
    const int code = query(buffer.data(), buffer.length());
    buffer.expectGuards();
    if (code != TAV_NOERROR) {
        expect(buffer.isUntouched() || buffer.text().empty(), "a failure gives no part of a value");
        return;
    }
    const std::string_view text = buffer.text();
    expect(query != TAV_GetLanguage || text.find('_') != std::string_view::npos,
           "a language is two codes with a line between");
}

}  // namespace

// A file system in memory keeps every run short. It holds a file as long as a connection is open.
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    expect(sqlite3_initialize() == SQLITE_OK &&
               sqlite3_vfs_register(sqlite3_vfs_find("memdb"), 1) == SQLITE_OK,
           "SQLite has files in memory");
    tavfuzz::startDevice();
    const std::string path = tavsim::device().root() + kDatabase;
    expect(sqlite3_open_v2(path.c_str(), &g_database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                           nullptr) == SQLITE_OK,
           "the database opens");
    run(prepare("CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE)"));
    g_delete = prepare("DELETE FROM Preferences");
    g_insert = prepare(
        "INSERT INTO Preferences VALUES ('deviceName', ?1), ('region', ?1), "
        "('locale', ?1)");
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    tavfuzz::Input input(bytes, size);
    const int length = input.byte();
    const unsigned char choice = input.byte();
    const auto type = static_cast<Type>(choice % kTypes);
    const std::size_t query = choice / kTypes % (std::size(kObjectQueries) + 1);
    const std::string value = input.rest();
    store(type, value);
    if (query == 0) {
        checkName(length, type, value);
    } else {
        checkObject(kObjectQueries[query - 1], length);
    }
    return 0;
}
