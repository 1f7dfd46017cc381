// The journal's entries that a scenario looks for.
#ifndef TAV_SIMULATOR_SCENARIO_ENTRIES_H
#define TAV_SIMULATOR_SCENARIO_ENTRIES_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/scenario/scenario.h"

namespace tavsim {

// What it is given must outlive it.
class Entries {
public:
    // Looks for the first entry that matches, among those behind the last one that was taken, or
    // only among those to come. Nothing new when it is looked for already.
    void seek(const Pattern& pattern);
    void seekInFuture(const Pattern& pattern);
    void stopSeeking();

    // The entry that was sought; null until it is there.
    const std::string* found() const { return m_found ? &m_found->second : nullptr; }
    void takeFound() { m_taken = m_found->first + 1; }

    // No such entry may come from here on.
    void ban(const Step& step, const Pattern& pattern) { m_bans.push_back({&step, &pattern}); }

    // The step that banned an entry which has come, and the entry.
    const std::optional<std::pair<const Step*, std::string>>& violation() const {
        return m_violation;
    }

    // Looks at the journal's last entry. True when it is one that was sought, or is banned.
    bool look(const std::string& line);

private:
    struct Ban {
        const Step* step;
        const Pattern* pattern;
    };

    std::int64_t m_taken = 0;  // so many entries have no further part in this
    const Pattern* m_sought = nullptr;
    std::optional<std::pair<std::int64_t, std::string>> m_found;  // its number, and its line
    std::vector<Ban> m_bans;
    std::optional<std::pair<const Step*, std::string>> m_violation;
};

}  // namespace tavsim

#endif
