#include "simulator/scenario/entries.h"

#include <algorithm>

#include "simulator/device/journal.h"

namespace tavsim {

void Entries::seek(std::span<const Pattern> patterns) {
    if (!m_sought.empty()) {
        return;
    }
    m_sought = patterns;
    m_assigned.assign(patterns.size(), std::nullopt);
    const auto& lines = journalLines();
    const std::int64_t first = journalLength() - static_cast<std::int64_t>(lines.size());
    for (std::int64_t number = std::max(first, m_taken); number < journalLength() && !areAllFound();
         ++number) {
        findIn(lines[static_cast<size_t>(number - first)], number);
    }
}

void Entries::seekInFuture(const Pattern& pattern) {
    m_sought = {&pattern, 1};
    m_assigned.resize(1);
}

void Entries::stopSeeking() {
    m_sought = {};
    m_found.clear();
    m_assigned.clear();
}

std::vector<size_t> Entries::missing() const {
    std::vector<size_t> missing;
    for (size_t pattern = 0; pattern < m_assigned.size(); ++pattern) {
        if (!m_assigned[pattern]) {
            missing.push_back(pattern);
        }
    }
    return missing;
}

bool Entries::look(const std::string& line) {
    const bool isSought = !areAllFound() && findIn(line, journalLength() - 1);
    for (const Ban& each : m_bans) {
        if (!m_violation && matches(line, *each.pattern)) {
            m_violation.emplace(each.step, line);
            return true;
        }
    }
    return isSought;
}

// Keeps the entry if each that was found, this one included, can meet a pattern of its own.
bool Entries::findIn(const std::string& line, std::int64_t number) {
    Found found = {number, line, {}};
    for (size_t pattern = 0; pattern < m_sought.size(); ++pattern) {
        if (matches(line, m_sought[pattern])) {
            found.patterns.push_back(pattern);
        }
    }
    m_found.push_back(std::move(found));
    std::vector<bool> isTried(m_sought.size());
    const bool isKept = assign(m_found.size() - 1, &isTried);
    if (!isKept) {
        m_found.pop_back();
    }
    return isKept;
}

// An augmenting path of a bipartite matching: an entry that has the pattern goes to another one.
bool Entries::assign(size_t found, std::vector<bool>* isTried) {
    for (const size_t pattern : m_found[found].patterns) {
        if ((*isTried)[pattern]) {
            continue;
        }
        (*isTried)[pattern] = true;
        if (!m_assigned[pattern] || assign(*m_assigned[pattern], isTried)) {
            m_assigned[pattern] = found;
            return true;
        }
    }
    return false;
}

}  // namespace tavsim
