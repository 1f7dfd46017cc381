#include "simulator/device/journal.h"

#include <glib.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>

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

bool isPlain(std::string_view text) {
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte >= 0x7f || c == '"' || c == '\\') {
            return false;
        }
    }
    return true;
}

void appendEscaped(std::string& out, std::string_view text) {
    if (isPlain(text)) {
        out += text;
        return;
    }
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    for (const char* at = valid.get(); *at != '\0'; ++at) {
        const unsigned char c = static_cast<unsigned char>(*at);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += *at;
        } else if (c < ' ' || c == 0x7f) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", c);
            out += code;
        } else {
            out += *at;
        }
    }
}

std::string quoted(const char* value) {
    return value != nullptr ? '"' + escapedJson(value) + '"' : "null";
}

}  // namespace

JournalEntry::JournalEntry(const char* kind, const char* what) : m_line("{\"at\":") {
    m_line += std::to_string(now());
    text("kind", kind);
    text("what", what);
}

JournalEntry::~JournalEntry() {
    m_line += '}';
    Journal& all = journal();
    if (all.file != nullptr) {
        std::fprintf(all.file, "%s\n", m_line.c_str());
        std::fflush(all.file);
    }
    if (all.lines.size() == kLinesKept) {
        all.lines.pop_front();
    }
    all.lines.push_back(std::move(m_line));
    ++all.length;
}

JournalEntry& JournalEntry::text(const char* key, const char* value) {
    m_line += std::string(",\"") + key + "\":" + quoted(value);
    return *this;
}

JournalEntry& JournalEntry::text(const char* key, const std::string& value) {
    return text(key, value.c_str());
}

JournalEntry& JournalEntry::texts(const char* key, const char* const* values, int count) {
    m_line += std::string(",\"") + key + "\":[";
    for (int index = 0; index < count; ++index) {
        m_line += index > 0 ? "," : "";
        m_line += quoted(values[index]);
    }
    m_line += ']';
    return *this;
}

JournalEntry& JournalEntry::number(const char* key, std::int64_t value) {
    m_line += std::string(",\"") + key + "\":" + std::to_string(value);
    return *this;
}

JournalEntry& JournalEntry::real(const char* key, double value) {
    m_line += std::string(",\"") + key + "\":" + jsonNumber(value);
    return *this;
}

JournalEntry& JournalEntry::flag(const char* key, bool value) {
    m_line += std::string(",\"") + key + "\":" + (value ? "true" : "false");
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

std::string jsonNumber(double value) {
    if (!std::isfinite(value)) {
        return "null";
    }
    char text[32];
    const auto [end, problem] = std::to_chars(std::begin(text), std::end(text), value);
    return std::string(text, end);
}

std::string escapedJson(std::string_view text) {
    std::string out;
    appendEscaped(out, text);
    return out;
}

}  // namespace tavsim
