// Search for the entries of the journal that a scenario expects.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "simulator/scenario/scenario.h"

namespace tavsim {

// Its arguments must outlive it.
class Entries {
public:
    // Seeks an entry for each of the patterns, in any order, after the last one that was taken, or
    // only among future ones. Does nothing when they are sought already.
    void seek(std::span<const Pattern> patterns);
    void seekInFuture(const Pattern& pattern);
    void stopSeeking();

    bool areAllFound() const { return m_found.size() == m_sought.size(); }
    const std::string& lastFound() const { return m_found.back().line; }

    // When that came; 0 where it was there already.
    Milliseconds lastFoundAt() const { return m_found.back().at; }

    void takeFound(const Step& step) {
        m_taken = m_found.back().number + 1;
        m_taker = &step;
    }

    // The patterns without an entry, and the one that the last entry meets.
    std::vector<size_t> missing() const;
    size_t patternOfLast() const;

    // Why this step finds no such entry among those that can be taken; empty when none is like it.
    std::string whyNone(const Pattern& pattern, const Step& step) const;

    // Counts such entries from the journal's start on.
    void count(const Pattern& pattern);
    std::int64_t countOf(const Pattern& pattern) const { return m_counts.at(&pattern); }

    // Bans such entries from here on.
    void ban(const Step& step, const Pattern& pattern) { m_bans.push_back({&step, &pattern}); }

    // A banned entry that has come, and the step that banned it.
    const std::optional<std::pair<const Step*, std::string>>& violation() const {
        return m_violation;
    }

    // Checks the journal's last entry. True when it is a sought one, banned, or counted.
    bool look(const std::string& line);

private:
    struct Ban {
        const Step* step;
        const Pattern* pattern;
    };

    struct Found {
        std::int64_t number;
        std::string line;
        Milliseconds at;
        std::vector<size_t> patterns;  // that it matches
    };

    bool findIn(const std::string& line, std::int64_t number, Milliseconds at);
    bool assign(size_t found, std::vector<bool>* isTried);

    std::int64_t m_taken = 0;       // the number of entries that are consumed
    const Step* m_taker = nullptr;  // that has consumed the last one
    std::span<const Pattern> m_sought;
    std::vector<Found> m_found;
    std::vector<std::optional<size_t>> m_assigned;  // for each pattern, the entry that meets it
    std::map<const Pattern*, std::int64_t> m_counts;
    std::vector<Ban> m_bans;
    std::optional<std::pair<const Step*, std::string>> m_violation;
};

}  // namespace tavsim
