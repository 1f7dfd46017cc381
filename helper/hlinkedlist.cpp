#include "platform/hlinkedlist.h"

#include <algorithm>
#include <deque>
#include <new>
#include <optional>

#include "helper/faults.h"
#include "helper/place_index.h"

namespace {

using Place = helper::PlaceIndex::Place;

char g_noElement;
void* const kGap = &g_noElement;

}  // namespace

// The elements have places that count up, in the order in which they were appended, with gaps where
// elements were removed from between others: a few for each element at most. An index, which is
// told of every change of a place, says where an element stands, and a look by number begins at the
// last one. So neither the length of the list nor the order of removals makes it slow.
struct HLinkedList::Elements {
    std::deque<void*> places;  // neither begins nor ends with a gap
    Place first = 0;           // of them; counts in 32 bits, and over
    helper::PlaceIndex index;
    size_t count = 0;
    size_t lastOffset = 0;  // so many elements stand before it:
    size_t lastNumber = 0;

    bool isGap(size_t offset) const { return places[offset] == kGap; }
    Place placeAt(size_t offset) const { return first + static_cast<Place>(offset); }

    size_t offsetOf(size_t number) {
        for (; lastNumber > number; --lastNumber) {
            while (isGap(--lastOffset)) {}
        }
        for (; lastNumber < number || isGap(lastOffset); ++lastOffset) {
            lastNumber += isGap(lastOffset) ? 0 : 1;
        }
        return lastOffset;
    }

    // Where the element stands first.
    std::optional<size_t> find(const void* element) const {
        std::optional<size_t> found;
        index.forPlacesOf(element, [&](Place place) {
            const size_t offset = static_cast<Place>(place - first);
            if (!found || offset < *found) {
                found = offset;
            }
        });
        return found;
    }

    void append(void* element) {
        index.makeRoom();
        places.push_back(element);
        index.add(element, placeAt(places.size() - 1));
        ++count;
    }

    void erase(size_t offset, const void* element) {
        constexpr size_t kMostGaps = 7;  // for an element
        index.remove(element, placeAt(offset));
        places[offset] = kGap;
        --count;
        lastNumber -= offset < lastOffset ? 1 : 0;
        trim();
        if (places.size() > (kMostGaps + 1) * count) {
            closeGaps();
        }
    }

    void trim() {
        while (!places.empty() && places.back() == kGap) {
            places.pop_back();
        }
        for (; !places.empty() && places.front() == kGap; ++first) {
            places.pop_front();
            lastOffset -= lastOffset > 0 ? 1 : 0;
        }
        lastOffset = std::min(lastOffset, places.size());
    }

    void closeGaps() {
        size_t end = 0;
        for (size_t offset = 0; offset < places.size(); ++offset) {
            if (!isGap(offset)) {
                index.move(places[offset], placeAt(offset), placeAt(end));
                places[end++] = places[offset];
            }
        }
        places.resize(end);
        lastOffset = lastNumber;
    }
};

HLinkedList::HLinkedList() noexcept : m_elements(new Elements) {
}

HLinkedList::~HLinkedList() {
    delete m_elements;
}

int HLinkedList::append(void* element) try {
    if (helper::faultStrikes(helper::Fault::Allocation)) {
        return 0;
    }
    m_elements->append(element);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

void* HLinkedList::get(int index) const {
    return index >= 0 && index < size()
               ? m_elements->places[m_elements->offsetOf(static_cast<size_t>(index))]
               : nullptr;
}

int HLinkedList::size() const {
    return static_cast<int>(m_elements->count);
}

void HLinkedList::remove(int index) {
    if (index >= 0 && index < size()) {
        const size_t offset = m_elements->offsetOf(static_cast<size_t>(index));
        m_elements->erase(offset, m_elements->places[offset]);
    }
}

void HLinkedList::remove(void* element) {
    const std::optional<size_t> offset = m_elements->find(element);
    if (offset) {
        m_elements->erase(*offset, element);
    }
}

void* HLinkedList::getLLElem(const void* element) const {
    return m_elements->find(element) ? const_cast<void*>(element) : nullptr;
}

void HLinkedList::clear() {
    *m_elements = {};
}
