// Search for the entries of the journal that a scenario expects.
#ifndef TAV_SIMULATOR_SCENARIO_ENTRIES_H
#define TAV_SIMULATOR_SCENARIO_ENTRIES_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/scenario/scenario.h"

namespace tavsim {

// Its arguments must outlive it.
class Entries {
public:
    // Seeks the first entry that matches, after the last one that was taken, or only among future
    // ones. Does nothing when it is sought already.
    void seek(const Pattern& pattern);
    void seekInFuture(const Pattern& pattern);
    void stopSeeking();

    // The sought entry; null until it was found.
    const std::string* found() const { return m_found ? &m_found->second : nullptr; }
    void takeFound() { m_taken = m_found->first + 1; }

    // Bans such entries from here on.
    void ban(const Step& step, const Pattern& pattern) { m_bans.push_back({&step, &pattern}); }

    // A banned entry that has come, and the step that banned it.
    const std::optional<std::pair<const Step*, std::string>>& violation() const {
        return m_violation;
    }

    // Checks the journal's last entry. True when it is the sought one, or banned.
    bool look(const std::string& line);

private:
    struct Ban {
        const Step* step;
        const Pattern* pattern;
    };

    std::int64_t m_taken = 0;  // the number of entries that are consumed
    const Pattern* m_sought = nullptr;
    std::optional<std::pair<std::int64_t, std::string>> m_found;  // its number, and its line
    std::vector<Ban> m_bans;
    std::optional<std::pair<const Step*, std::string>> m_violation;
};

}  // namespace tavsim

#endif
