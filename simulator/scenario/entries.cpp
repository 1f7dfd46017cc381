#include "simulator/scenario/entries.h"

#include <algorithm>

#include "simulator/device/journal.h"

namespace tavsim {

void Entries::seek(const Pattern& pattern) {
    if (m_sought != nullptr) {
        return;
    }
    m_sought = &pattern;
    const auto& lines = journalLines();
    const std::int64_t first = journalLength() - static_cast<std::int64_t>(lines.size());
    for (std::int64_t number = std::max(first, m_taken); number < journalLength(); ++number) {
        const std::string& line = lines[static_cast<size_t>(number - first)];
        if (matches(line, pattern)) {
            m_found.emplace(number, line);
            return;
        }
    }
}

void Entries::seekInFuture(const Pattern& pattern) {
    m_sought = &pattern;
}

void Entries::stopSeeking() {
    m_sought = nullptr;
    m_found.reset();
}

bool Entries::look(const std::string& line) {
    const bool isSought = m_sought != nullptr && !m_found && matches(line, *m_sought);
    if (isSought) {
        m_found.emplace(journalLength() - 1, line);
    }
    for (const Ban& each : m_bans) {
        if (!m_violation && matches(line, *each.pattern)) {
            m_violation.emplace(each.step, line);
            return true;
        }
    }
    return isSought;
}

}  // namespace tavsim
