#include "helper/place_index.h"

#include <algorithm>
#include <utility>

namespace helper {

void PlaceIndex::makeRoom() {
    constexpr std::size_t kFewest = 16;
    if (2 * (m_count + 1) <= m_entries.size()) {
        return;
    }
    std::vector<Entry> before(std::max(2 * m_entries.size(), kFewest));
    std::swap(before, m_entries);
    m_count = 0;
    for (const Entry& entry : before) {
        if (entry.isUsed) {
            add(entry.element, entry.place);
        }
    }
}

void PlaceIndex::add(const void* element, Place place) {
    std::size_t at = home(element);
    while (m_entries[at].isUsed) {
        at = next(at);
    }
    m_entries[at] = {element, place, true};
    ++m_count;
}

// What stands behind moves up where that does not put it before its home, so that a search may end
// at the first free entry.
void PlaceIndex::remove(const void* element, Place place) {
    const std::size_t mask = m_entries.size() - 1;
    std::size_t hole = entryOf(element, place);
    for (std::size_t at = next(hole); m_entries[at].isUsed; at = next(at)) {
        if (((at - home(m_entries[at].element)) & mask) >= ((at - hole) & mask)) {
            m_entries[hole] = m_entries[at];
            hole = at;
        }
    }
    m_entries[hole].isUsed = false;
    --m_count;
}

void PlaceIndex::move(const void* element, Place from, Place to) {
    m_entries[entryOf(element, from)].place = to;
}

// Things that are made one after the other are mostly looked for one after the other. So those that
// are neighbours in memory have neighbouring entries, and each such group is somewhere else. Things
// of 32 bytes or more leave at least every second entry of their group free: searches are short.
std::size_t PlaceIndex::home(const void* element) const {
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
    constexpr unsigned kThing = 4;  // bits of an address within 16 bytes,
    constexpr unsigned kGroup = 9;  // and within a group of 32 such
    const auto address = reinterpret_cast<std::uintptr_t>(element);
    const std::uint64_t group = ((address >> kGroup) * kGoldenRatio) >> 32;
    const std::uint64_t thing = (group << (kGroup - kThing)) + (address >> kThing) % 32;
    return static_cast<std::size_t>(thing) & (m_entries.size() - 1);
}

std::size_t PlaceIndex::entryOf(const void* element, Place place) const {
    std::size_t at = home(element);
    while (m_entries[at].element != element || m_entries[at].place != place) {
        at = next(at);
    }
    return at;
}

}  // namespace helper
