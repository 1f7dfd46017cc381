#include "simulator/scenario/entries.h"

#include <algorithm>

#include "simulator/device/journal.h"
#include "simulator/language/explanation.h"

namespace tavsim {
namespace {

// The line alone where it is one of the same file.
std::string placeSeenFrom(const Step& step, const Step& other) {
    const size_t line = other.place.rfind(':') + 1;
    const bool isSameFile =
        step.place.rfind(':') + 1 == line && step.place.starts_with(other.place.substr(0, line));
    return isSameFile ? "line " + other.place.substr(line) : other.place;
}

}  // namespace

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
        findIn(lines[static_cast<size_t>(number - first)], number, 0);
    }
}

void Entries::seekInFuture(const Pattern& pattern) {
    m_sought = {&pattern, 1};
    m_assigned.resize(1);
}

std::string Entries::whyNone(const Pattern& pattern, const Step& step) const {
    const EntryLines lines(journalLines().begin(), journalLines().end());
    const std::int64_t first = journalLength() - static_cast<std::int64_t>(lines.size());
    const auto taken = std::clamp<std::int64_t>(m_taken - first, 0, std::ssize(lines));
    const auto consumed = lines.begin() + static_cast<std::ptrdiff_t>(taken);
    const auto earlier = std::find_if(std::reverse_iterator(consumed), lines.rend(),
                                      [&](auto line) { return matches(line, pattern); });
    if (m_taker != nullptr && earlier != lines.rend()) {
        const bool isTheTaken = earlier.base() == consumed;
        return "it has one at " + timeOf(*earlier) + ", " +
               (isTheTaken ? "which " : "before the entry that ") + placeSeenFrom(step, *m_taker) +
               (isTheTaken ? " has used" : " used");
    }
    return closestTo(pattern, {consumed, lines.end()});
}

void Entries::count(const Pattern& pattern) {
    m_counts[&pattern] = std::ranges::count_if(
        journalLines(), [&](const std::string& line) { return matches(line, pattern); });
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

size_t Entries::patternOfLast() const {
    const auto last = std::find(m_assigned.begin(), m_assigned.end(), m_found.size() - 1);
    return static_cast<size_t>(last - m_assigned.begin());
}

bool Entries::look(const std::string& line) {
    const bool isSought = !areAllFound() && findIn(line, journalLength() - 1, now());
    for (const Ban& each : m_bans) {
        if (!m_violation && matches(line, *each.pattern)) {
            m_violation.emplace(each.step, line);
            return true;
        }
    }
    bool isCounted = false;
    for (auto& [pattern, found] : m_counts) {
        const bool isOne = matches(line, *pattern);
        found += isOne ? 1 : 0;
        isCounted = isCounted || isOne;
    }
    return isSought || isCounted;
}

// Keeps the entry if each that was found, this one included, can meet a pattern of its own.
bool Entries::findIn(const std::string& line, std::int64_t number, Milliseconds at) {
    Found found = {number, line, at, {}};
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
