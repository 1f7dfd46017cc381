/* Ordered list of untyped pointers, from the helper library. */
#ifndef TAV_PLATFORM_HLINKEDLIST_H
#define TAV_PLATFORM_HLINKEDLIST_H

#include "visibility.h"

/* The list owns none of the things that its pointers point to: removing, clearing and destroying
 * leave them alone. Indices run from 0; one outside the list answers null or does nothing.
 *
 * The library asks for a pointer, and removes it, with every reply, and for indices one after the
 * other. None of that may take longer because the list is long, or service calls do. */
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
