// The journal: what the application did to the device, one JSON object a line.
#ifndef TAV_SIMULATOR_DEVICE_JOURNAL_H
#define TAV_SIMULATOR_DEVICE_JOURNAL_H

#include <cstdint>
#include <deque>
#include <functional>
#include <string>

#include "base/json/writer.h"

namespace tavsim {

// Builds one line and writes it when it goes out of scope:
// {"at":120,"kind":"bus","what":"call",…,"outcome":"token 7"}
class JournalEntry {
public:
    JournalEntry(const char* kind, const char* what);
    ~JournalEntry();
    JournalEntry(const JournalEntry&) = delete;
    JournalEntry& operator=(const JournalEntry&) = delete;

    // As of JsonWriter::value: a text, which may be null, a number, or true and false.
    template <typename Value>
    JournalEntry& member(const char* key, const Value& value) {
        m_line.member(key, value);
        return *this;
    }
    JournalEntry& texts(const char* key, const char* const* values, int count);
    JournalEntry& outcome(const std::string& value) { return member("outcome", value); }

private:
    base::JsonWriter m_line;
};

// Starts an empty journal, which is also appended to the file, if one is given. False, with a line
// in `error`, when the file cannot be written. A write error later ends the program.
bool startJournal(const std::string& file, std::string* error);
void stopJournal();

// Called with each new line, after it was added. Replaces the listener before; empty for none.
void observeJournal(std::function<void(const std::string& line)> observer);

// The last 10000 lines, or fewer if they are long, and the number of lines since the start.
const std::deque<std::string>& journalLines();
std::int64_t journalLength();

}  // namespace tavsim

#endif
