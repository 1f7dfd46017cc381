// Memory for things of one kind that come and go in large numbers.
#ifndef TAV_CORE_POOL_H
#define TAV_CORE_POOL_H

#include <sanitizer/asan_interface.h>

#include <cstddef>
#include <new>

namespace tav {

// Has blocks of places for them. A new thing gets the place that was given back last, or else the
// next one that is fresh; and where nothing is left, all places are fresh again. So things that are
// made one after the other lie side by side, in whatever order those before them went.
template <typename Thing>
class Pool {
public:
    Pool() = default;
    ~Pool() { freeUnused(); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    // Null when memory is exhausted.
    Thing* make() {
        if (m_givenBack == nullptr && m_freshCount == 0 && !goToNextBlock()) {
            return nullptr;
        }
        ++m_count;
        const bool isFresh = m_givenBack == nullptr;
        Place* place = isFresh ? &m_block->places[kPlaces - m_freshCount--] : m_givenBack;
        ASAN_UNPOISON_MEMORY_REGION(place, sizeof *place);
        m_givenBack = isFresh ? nullptr : place->next;
        return new (place) Thing;
    }

    void destroy(Thing* thing) {
        thing->~Thing();
        auto* place = reinterpret_cast<Place*>(thing);
        place->next = m_givenBack;
        m_givenBack = place;
        ASAN_POISON_MEMORY_REGION(place, sizeof *place);
        if (--m_count == 0) {
            m_givenBack = nullptr;
            m_block = m_firstBlock;
            m_freshCount = kPlaces;
        }
    }

    // Frees the memory, unless there is something in it.
    void freeUnused() {
        if (m_count > 0) {
            return;
        }
        while (m_firstBlock != nullptr) {
            Block* block = m_firstBlock;
            m_firstBlock = block->next;
            delete block;
        }
        m_block = nullptr;
        m_freshCount = 0;
    }

private:
    static constexpr std::size_t kPlaces = 127;

    union Place {
        Place* next;  // of those given back
        alignas(Thing) unsigned char thing[sizeof(Thing)];
    };

    struct Block {
        Block* next = nullptr;
        Place places[kPlaces];
    };

    bool goToNextBlock() {
        Block*& next = m_block != nullptr ? m_block->next : m_firstBlock;
        if (next == nullptr) {
            next = new (std::nothrow) Block;
            if (next == nullptr) {
                return false;
            }
            ASAN_POISON_MEMORY_REGION(next->places, sizeof next->places);
        }
        m_block = next;
        m_freshCount = kPlaces;
        return true;
    }

    Block* m_firstBlock = nullptr;
    Block* m_block = nullptr;      // the one that has fresh places, its last ones
    std::size_t m_freshCount = 0;  // of them
    Place* m_givenBack = nullptr;
    std::size_t m_count = 0;
};

}  // namespace tav

#endif
