// Failures on demand, for an implementation that wants to see what they lead to.
#ifndef TAV_HELPER_FAILING_H
#define TAV_HELPER_FAILING_H

#include <atomic>

namespace helper {

// HString_alloc, HString_append and HLinkedList::append, and what else makes an HString; or a read
// of HDataReader.
enum class Operation { Allocation, Read };

// Whether this one is to fail. Asked each time on any thread; null for never.
inline std::atomic<bool (*)(Operation)> g_isToFail = nullptr;

inline bool fails(Operation operation) {
    const auto isToFail = g_isToFail.load(std::memory_order_relaxed);
    return isToFail != nullptr && isToFail(operation);
}

}  // namespace helper

#endif
