// The journal: what the application did to the device, one JSON object a line.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/json/writer.h"
#include "platform/visibility.h"

namespace tavsim {

// Builds one line and writes it when it goes out of scope:
// {"at":120,"kind":"bus","what":"call",…,"outcome":"token 7"}
class JournalEntry {
public:
    // Members are names with their values, as of JsonWriter::value: a text, which may be null, a
    // number, or true and false.
    template <typename... Members>
    JournalEntry(const char* kind, const char* what, const Members&... members) {
        begin(kind, what).members(members...);
    }
    ~JournalEntry();
    JournalEntry(const JournalEntry&) = delete;
    JournalEntry& operator=(const JournalEntry&) = delete;

    void texts(const char* key, std::span<const std::optional<std::string_view>> values);
    void outcome(const std::string& value) { m_line.member("outcome", value); }

private:
    base::JsonWriter& begin(const char* kind, const char* what);

    base::JsonWriter m_line;
};

// The same in one call, for an entry without an outcome.
template <typename... Members>
void writeEntry(const char* kind, const char* what, const Members&... members) {
    const JournalEntry entry(kind, what, members...);
}

// Starts an empty journal, which is also appended to the file, if one is given. False, with a line
// in `error`, when the file cannot be written. A write error later ends the program.
bool startJournal(const std::string& file, std::string* error);
void stopJournal();

// Called with each new line, after it was added. Replaces the listener before; empty for none.
void observeJournal(std::function<void(const std::string& line)> observer);

// The last 10000 lines, or fewer if they are long, and the number of lines since the start.
TAV_PLATFORM_API const std::deque<std::string>& journalLines();
std::int64_t journalLength();

// Reads the lines one after the other, from the first that is kept.
class JournalReader {
public:
    // Calls the function with each line that has come since the last time. Returns how many before
    // them are not kept any more.
    std::int64_t read(const std::function<void(const std::string& line)>& take);

private:
    std::int64_t m_next = 0;
};

}  // namespace tavsim
