#include "platform/hlinkedlist.h"

#include <algorithm>
#include <list>
#include <new>
#include <unordered_map>

#include "helper/failing.h"

// A hash table beside the list finds a pointer's node, and a look-up by index starts at the node of
// the last one. So replies do not become slower as the list grows.
struct HLinkedList::Elements {
    using List = std::list<void*>;
    using Place = List::iterator;

    List list;
    std::unordered_multimap<const void*, Place> places;
    Place last = list.end();  // the node that was last looked up by index, and its index
    int lastNumber = 0;

    Place placeOf(int number) {
        if (last == list.end()) {
            last = list.begin();
            lastNumber = 0;
        }
        std::advance(last, number - lastNumber);
        lastNumber = number;
        return last;
    }

    // The list may contain a pointer several times; the first one counts.
    Place find(const void* element) {
        switch (places.count(element)) {
        case 0:
            return list.end();
        case 1:
            return places.find(element)->second;
        default:
            return std::find(list.begin(), list.end(), element);
        }
    }

    void append(void* element) {
        List added(1, element);
        places.emplace(element, added.begin());
        list.splice(list.end(), added);
    }

    void erase(Place place) {
        auto entry = places.find(*place);
        while (entry->second != place) {
            ++entry;  // equal pointers stand together
        }
        places.erase(entry);
        const bool isLast = place == last;
        const Place next = list.erase(place);
        last = isLast ? next : list.end();
    }
};

HLinkedList::HLinkedList() noexcept : m_elements(new Elements) {
}

HLinkedList::~HLinkedList() {
    delete m_elements;
}

int HLinkedList::append(void* element) try {
    if (helper::fails(helper::Operation::Allocation)) {
        return 0;
    }
    m_elements->append(element);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

void* HLinkedList::get(int index) const {
    return index >= 0 && index < size() ? *m_elements->placeOf(index) : nullptr;
}

int HLinkedList::size() const {
    return static_cast<int>(m_elements->list.size());
}

void HLinkedList::remove(int index) {
    if (index >= 0 && index < size()) {
        m_elements->erase(m_elements->placeOf(index));
    }
}

void HLinkedList::remove(void* element) {
    const Elements::Place place = m_elements->find(element);
    if (place != m_elements->list.end()) {
        m_elements->erase(place);
    }
}

void* HLinkedList::getLLElem(const void* element) const {
    return m_elements->places.contains(element) ? const_cast<void*>(element) : nullptr;
}

void HLinkedList::clear() {
    m_elements->list.clear();
    m_elements->places.clear();
    m_elements->last = m_elements->list.end();
}
