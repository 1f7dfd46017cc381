// Fault injection, for an implementation that offers it.
#pragma once

#include <atomic>

namespace helper {

// Allocation is HString_alloc, HString_append, HLinkedList::append and whatever else makes an
// HString. Read is a read of HDataReader.
enum class Operation { Allocation, Read };

// Whether this operation must fail. Called for each one, on any thread; null for never.
inline std::atomic<bool (*)(Operation)> g_isToFail = nullptr;

inline bool fails(Operation operation) {
    const auto isToFail = g_isToFail.load(std::memory_order_relaxed);
    return isToFail != nullptr && isToFail(operation);
}

}  // namespace helper
