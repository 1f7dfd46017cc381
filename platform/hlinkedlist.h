/* Ordered list of untyped pointers, from the helper library. */
#ifndef TAV_PLATFORM_HLINKEDLIST_H
#define TAV_PLATFORM_HLINKEDLIST_H

#include "visibility.h"

/* The list does not own what its pointers point to. Indices run from 0; one outside of the list
 * gives null or does nothing.
 *
 * With every reply the library looks a pointer up and removes it, and it also iterates by index.
 * These must take constant time, or service calls become slower as the list grows. */
class TAV_PLATFORM_API HLinkedList {
public:
    HLinkedList() noexcept;
    ~HLinkedList();
    HLinkedList(const HLinkedList&) = delete;
    HLinkedList& operator=(const HLinkedList&) = delete;

    /* Non-zero on success; 0 when memory is exhausted, and the list is then as it was. */
    int append(void* element);

    void* get(int index) const;
    int size() const;

    /* Later elements move down by one. */
    void remove(int index);

    /* Removes the first element that equals the pointer, if there is one. */
    void remove(void* element);

    /* Non-null when the pointer is in the list. */
    void* getLLElem(const void* element) const;

    void clear();

private:
    struct Elements;
    Elements* m_elements;
};

#endif
