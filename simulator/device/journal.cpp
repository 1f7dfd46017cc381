#include "simulator/device/journal.h"

#include <cstdio>

#include "simulator/device/clock.h"

namespace tavsim {
namespace {

constexpr size_t kLinesKept = 10000;

struct Journal {
    std::deque<std::string> lines;
    std::int64_t length = 0;
    FILE* file = nullptr;
};

Journal& journal() {
    static Journal& instance = *new Journal;
    return instance;
}

}  // namespace

JournalEntry::JournalEntry(const char* kind, const char* what) {
    m_line.beginObject().member("at", now()).member("kind", kind).member("what", what);
}

JournalEntry::~JournalEntry() {
    std::string line = m_line.endObject().take();
    Journal& all = journal();
    if (all.file != nullptr) {
        std::fprintf(all.file, "%s\n", line.c_str());
        std::fflush(all.file);
    }
    if (all.lines.size() == kLinesKept) {
        all.lines.pop_front();
    }
    all.lines.push_back(std::move(line));
    ++all.length;
}

JournalEntry& JournalEntry::texts(const char* key, const char* const* values, int count) {
    m_line.key(key).beginArray();
    for (int index = 0; index < count; ++index) {
        m_line.value(values[index]);
    }
    m_line.endArray();
    return *this;
}

bool startJournal(const std::string& file) {
    stopJournal();
    journal().lines.clear();
    journal().length = 0;
    if (file.empty()) {
        return true;
    }
    journal().file = std::fopen(file.c_str(), "we");
    return journal().file != nullptr;
}

void stopJournal() {
    if (journal().file != nullptr) {
        std::fclose(journal().file);
        journal().file = nullptr;
    }
}

const std::deque<std::string>& journalLines() {
    return journal().lines;
}

std::int64_t journalLength() {
    return journal().length;
}

}  // namespace tavsim
