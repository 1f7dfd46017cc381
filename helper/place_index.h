// Where pointers stand in a sequence.
#ifndef TAV_HELPER_PLACE_INDEX_H
#define TAV_HELPER_PLACE_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace helper {

// A table with open addressing: it needs no memory for a single pointer, and only makeRoom() can
// fail. The same pointer may stand at several places.
class PlaceIndex {
public:
    using Place = std::uint32_t;

    // For one pointer more; throws std::bad_alloc, and the index is then as it was.
    void makeRoom();

    void add(const void* element, Place place);

    // The pointer stands at that place.
    void remove(const void* element, Place place);
    void move(const void* element, Place from, Place to);

    // Calls the function with every place of the pointer, in any order.
    template <typename Function>
    void forPlacesOf(const void* element, Function function) const {
        for (std::size_t at = home(element); !isFree(at); at = next(at)) {
            if (m_entries[at].element == element) {
                function(m_entries[at].place);
            }
        }
    }

private:
    struct Entry {
        const void* element;
        Place place;
        bool isUsed = false;
    };

    bool isFree(std::size_t at) const { return m_count == 0 || !m_entries[at].isUsed; }
    std::size_t home(const void* element) const;
    std::size_t next(std::size_t at) const { return (at + 1) & (m_entries.size() - 1); }
    std::size_t entryOf(const void* element, Place place) const;

    std::vector<Entry> m_entries;  // a power of 2 of them, at most half of them in use
    std::size_t m_count = 0;
};

}  // namespace helper

#endif
