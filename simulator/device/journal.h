// What the application did to the device, one JSON object a line.
#ifndef TAV_SIMULATOR_DEVICE_JOURNAL_H
#define TAV_SIMULATOR_DEVICE_JOURNAL_H

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace tavsim {

// Builds one line and writes it when it goes out of scope:
// {"at":120,"kind":"bus","what":"call",…,"outcome":"token 7"}
class JournalEntry {
public:
    JournalEntry(const char* kind, const char* what);
    ~JournalEntry();
    JournalEntry(const JournalEntry&) = delete;
    JournalEntry& operator=(const JournalEntry&) = delete;

    // A null text shows as null; text that is no UTF-8 is repaired.
    JournalEntry& text(const char* key, const char* value);
    JournalEntry& text(const char* key, const std::string& value);
    JournalEntry& texts(const char* key, const char* const* values, int count);
    JournalEntry& number(const char* key, std::int64_t value);
    JournalEntry& real(const char* key, double value);
    JournalEntry& flag(const char* key, bool value);
    JournalEntry& outcome(const std::string& value) { return text("outcome", value); }

private:
    std::string m_line;
};

// Starts an empty journal that is also written to the file, if there is one; false when the file
// cannot be written.
bool startJournal(const std::string& file);
void stopJournal();

// The last lines, and how many there have been in all.
const std::deque<std::string>& journalLines();
std::int64_t journalLength();

// The text as the inside of a JSON string.
std::string escapedJson(std::string_view text);

// The shortest JSON number that reads back as the value; null for one that JSON cannot spell.
std::string jsonNumber(double value);

}  // namespace tavsim

#endif
