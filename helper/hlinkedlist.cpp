#include "platform/hlinkedlist.h"

#include <algorithm>
#include <new>
#include <vector>

#include "helper/faults.h"

namespace {

constexpr size_t kNotThere = static_cast<size_t>(-1);

}  // namespace

// A vector whose live part begins at `first`: lists are mostly emptied from the front, and so that
// costs no moving.
struct HLinkedList::Elements {
    std::vector<void*> items;
    size_t first = 0;

    size_t count() const { return items.size() - first; }

    void** begin() { return items.data() + first; }

    size_t find(const void* element) {
        void** end = begin() + count();
        void** found = std::find(begin(), end, element);
        return found == end ? kNotThere : static_cast<size_t>(found - begin());
    }

    void erase(size_t index) {
        if (index < count() / 2) {
            std::move_backward(begin(), begin() + index, begin() + index + 1);
            ++first;
        } else {
            items.erase(items.begin() + static_cast<std::ptrdiff_t>(first + index));
        }
        if (count() == 0) {
            clear();
        }
    }

    void append(void* element) {
        if (first > items.size() / 2) {
            items.erase(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(first));
            first = 0;
        }
        items.push_back(element);
    }

    void clear() {
        items.clear();
        first = 0;
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
    return index >= 0 && index < size() ? m_elements->begin()[index] : nullptr;
}

int HLinkedList::size() const {
    return static_cast<int>(m_elements->count());
}

void HLinkedList::remove(int index) {
    if (index >= 0 && index < size()) {
        m_elements->erase(static_cast<size_t>(index));
    }
}

void HLinkedList::remove(void* element) {
    const size_t index = m_elements->find(element);
    if (index != kNotThere) {
        m_elements->erase(index);
    }
}

void* HLinkedList::getLLElem(const void* element) const {
    const size_t index = m_elements->find(element);
    return index == kNotThere ? nullptr : m_elements->begin()[index];
}

void HLinkedList::clear() {
    m_elements->clear();
}
