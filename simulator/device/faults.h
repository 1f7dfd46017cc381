// Fault injection.
#pragma once

#include <string_view>

#include "platform/visibility.h"

namespace tavsim {

// The kinds of operations that can be made to fail.
enum class Fault {
    Allocation,   // HString_alloc, HString_append, what else makes an HString, HLinkedList::append
    Dispatch,     // the three calls of HKSCaller
    HostRequest,  // NApp functions that can refuse, and the SDL hooks
    Read          // HDataReader, the unique-id file
};

// Counts one operation; true when it must fail.
bool faultStrikes(Fault fault);

// Both restart the count; the next operation is number 1. With n = 0 nothing fails.
TAV_PLATFORM_API void failNthFault(Fault fault, int n);
TAV_PLATFORM_API void failFaultsFrom(Fault fault, int n);

TAV_PLATFORM_API int faultOccurrences(Fault fault);

// Reads "allocation:3", "dispatch:1", "host:2" or "read:1"; a + at the end stands for all from that
// one on. False for anything else.
bool setFaultFromText(std::string_view text);
bool isFaultText(std::string_view text);

}  // namespace tavsim
