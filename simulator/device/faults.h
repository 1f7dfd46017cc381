// Failures on demand.
#ifndef TAV_SIMULATOR_DEVICE_FAULTS_H
#define TAV_SIMULATOR_DEVICE_FAULTS_H

#include <string>

namespace tavsim {

// Things that can be made to fail.
enum class Fault {
    Allocation,   // HString_alloc, HString_append, what else makes an HString, HLinkedList::append
    Dispatch,     // the three calls of HKSCaller
    HostRequest,  // NApp functions that can refuse, and the SDL hooks
    Read          // HDataReader, the unique-id file
};

// Counts one occurrence; true when it is to fail.
bool faultStrikes(Fault fault);

// Both count anew, from 1. Nothing fails where n is 0.
void failNthFault(Fault fault, int n);
void failFaultsFrom(Fault fault, int n);

int faultOccurrences(Fault fault);

// "allocation:3", "dispatch:1", "host:2" or "read:1", with a + behind it for all from that one on;
// false for anything else.
bool setFaultFromText(const std::string& text);

}  // namespace tavsim

#endif
