#include "device/preferences.h"

#include <glib.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "core/buffer.h"
#include "core/handles.h"
#include "core/report.h"
#include "core/status.h"
#include "platform/kpsystem.h"
#include "platform/napp.h"
#include "tav.h"

namespace {

using tav::checkBuffer;
using tav::getPrefsDBField;

constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";
constexpr char kDeviceNameQuery[] = "SELECT * FROM Preferences WHERE KEY='deviceName'";
constexpr char kQueryFormat[] = "SELECT * FROM Preferences WHERE KEY='%s'";
constexpr int kQuerySize = 1024;
constexpr int kValueColumn = 1;
constexpr int kCodeSize = 32;

using Database = tav::Owner<sqlite3, sqlite3_close>;
using Statement = tav::Owner<sqlite3_stmt, sqlite3_finalize>;
using GlibText = tav::Owner<char, g_free>;

Database openPreferences() {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open(kDatabase, &handle);
    Database database(handle);  // to be closed even when opening failed
    if (result != SQLITE_OK) {
        return nullptr;
    }
    return database;
}

Statement prepare(const Database& database, const char* query) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare(database.get(), query, -1, &statement, nullptr) != SQLITE_OK) {
        return nullptr;
    }
    return Statement(statement);
}

// Null when the row has no such column, or null in it. Valid as long as the statement.
const char* valueText(const Statement& statement) {
    return reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), kValueColumn));
}

std::string_view withoutQuotes(std::string_view text) {
    if (!text.starts_with('"') || !text.ends_with('"')) {
        return text;
    }
    text.remove_prefix(1);
    if (!text.empty()) {  // empty when one quote is both first and last
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

namespace tav {

int getPrefsDBField(const char* key, const char* member, char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%s, %s, %p, %d", key, member, static_cast<void*>(buffer),
                       bufferLength);
    const Database database = openPreferences();
    if (database == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not open preferences database");
    }
    char query[kQuerySize];
    std::snprintf(query, sizeof query, kQueryFormat, key);
    const Statement statement = prepare(database, query);
    if (statement == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not prepare access from database");
    }
    const bool found = sqlite3_step(statement.get()) == SQLITE_ROW;
    const char* value = found ? valueText(statement) : nullptr;
    if (value == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not access from database");
    }
    const int status = NApp_GetJsonValue(value, member, buffer, bufferLength);
    const int error = convertFromNAppError(status);
    if (status == NAPP_BUFFER_TOO_SMALL) {
        return TAV_FAIL(__func__, error, "The sent-in string was too small to hold the result");
    }
    return error;
}

int getKoraPrefSystemValue(const char* key, char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p, %d", key, static_cast<void*>(buffer),
                       bufferLength);
    char* text = nullptr;
    const int result = KPSystemCopyStringValue(key, &text);
    const GlibText value(text);
    if (result != 0 || value == nullptr) {
        HTracker_funcTrack("tav_1", __func__, "KPSystemCopyStringValue failed");
        return TAV_EOTHER;
    }
    const std::size_t length = std::strlen(value.get());
    if (std::cmp_less_equal(bufferLength, length)) {
        HTracker_funcTrack("tav_1", __func__, "TAV_STRINGTOOSMALL");
        return TAV_STRINGTOOSMALL;
    }
    std::memcpy(buffer, value.get(), length + 1);
    return TAV_NOERROR;
}

}  // namespace tav

int TAV_GetDeviceName(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    const Database database = openPreferences();
    if (database == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not open preferences database");
    }
    const Statement statement = prepare(database, kDeviceNameQuery);
    if (statement == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not prep device name statement");
    }
    if (sqlite3_step(statement.get()) != SQLITE_ROW) {
        return TAV_FAIL(__func__, TAV_EOTHER, "Device has no name. Bypassed first use?");
    }
    const char* text = valueText(statement);
    if (text == nullptr || *text == '\0') {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "Could not parse device name");
    }
    const std::string_view name = withoutQuotes(text);
    const int requiredLength = static_cast<int>(name.size()) + 1;
    if (bufferLength < requiredLength) {
        return TAV_FAIL(__func__, TAV_STRINGTOOSMALL,
                        "buffer too small. Required length %d, buffer length %d", requiredLength,
                        bufferLength);
    }
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
    return TAV_NOERROR;
}

int TAV_GetRegionCountryCode(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    return getPrefsDBField("region", "countryCode", buffer, bufferLength);
}

int TAV_GetRegionCountryName(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    return getPrefsDBField("region", "countryName", buffer, bufferLength);
}

int TAV_GetLanguage(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    char language[kCodeSize] = {};
    int error = getPrefsDBField("locale", "languageCode", language, sizeof language);
    if (error != TAV_NOERROR) {
        return error;
    }
    char country[kCodeSize] = {};
    error = getPrefsDBField("locale", "countryCode", country, sizeof country);
    if (error != TAV_NOERROR) {
        return error;
    }
    const std::size_t requiredLength = std::strlen(language) + std::strlen(country) + 2;
    if (std::cmp_less(bufferLength, requiredLength)) {
        return TAV_FAIL(__func__, TAV_STRINGTOOSMALL, "string buffer too small");
    }
    std::snprintf(buffer, static_cast<std::size_t>(bufferLength), "%s_%s", language, country);
    return TAV_NOERROR;
}
