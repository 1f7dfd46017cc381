#include "simulator/device/journal.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/line_file.h"
#include "simulator/device/edge.h"
#include "simulator/time/clock.h"

namespace tavsim {
namespace {

constexpr size_t kLinesKept = 10000;
constexpr size_t kBytesKept = 64 << 20;

struct Journal {
    std::deque<std::string> lines;
    size_t bytes = 0;  // of the lines
    std::int64_t length = 0;
    base::LineFile file;
    pid_t owner = 0;  // the process that writes the file; a fork of the application does not
    std::function<void(const std::string&)> observer;
};

Journal& journal() {
    static Journal& instance = *new Journal;
    return instance;
}

void keep(const std::string& line) {
    Journal& all = journal();
    all.bytes += line.size();
    all.lines.push_back(line);
    ++all.length;
    while (all.lines.size() > kLinesKept || (all.bytes > kBytesKept && all.lines.size() > 1)) {
        all.bytes -= all.lines.front().size();
        all.lines.pop_front();
    }
}

void write(const std::string& line) {
    base::LineFile& file = journal().file;
    if (!file.isOpen() || journal().owner != getpid() || file.append(line)) {
        return;
    }
    const std::string reason = std::strerror(errno);
    const std::string path = file.path();
    file.close();
    endProgram(path + ": the journal cannot be written: " + reason);
}

}  // namespace

base::JsonWriter& JournalEntry::begin(const char* kind, const char* what) {
    return m_line.beginObject().members("at", now(), "kind", kind, "what", what);
}

JournalEntry::~JournalEntry() try {
    const std::string line = m_line.endObject().take();
    write(line);
    keep(line);
    if (journal().observer) {
        journal().observer(line);
    }
} catch (...) {
    endProgramByException();
}

void JournalEntry::texts(const char* key, std::span<const std::optional<std::string_view>> values) {
    m_line.key(key).beginArray();
    for (const std::optional<std::string_view>& text : values) {
        text ? m_line.value(*text) : m_line.raw("null");
    }
    m_line.endArray();
}

bool startJournal(const std::string& file, std::string* error) {
    journal() = {};
    journal().owner = getpid();
    if (!file.empty() && !journal().file.open(file)) {
        *error = file + ": the journal cannot be written: " + std::strerror(errno);
        return false;
    }
    return true;
}

void stopJournal() {
    journal().file.close();
}

void observeJournal(std::function<void(const std::string& line)> observer) {
    journal().observer = std::move(observer);
}

const std::deque<std::string>& journalLines() {
    return journal().lines;
}

std::int64_t journalLength() {
    return journal().length;
}

std::int64_t JournalReader::read(const std::function<void(const std::string& line)>& take) {
    const auto& lines = journal().lines;
    const std::int64_t first = journal().length - static_cast<std::int64_t>(lines.size());
    const std::int64_t lost = std::max<std::int64_t>(first - m_next, 0);
    for (m_next += lost; m_next < journal().length; ++m_next) {
        take(lines[static_cast<size_t>(m_next - first)]);
    }
    return lost;
}

}  // namespace tavsim
