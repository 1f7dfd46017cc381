// Failures on demand.
#ifndef TAV_SIMULATOR_FAULTS_H
#define TAV_SIMULATOR_FAULTS_H

#include <string>

#include "simulator/device.h"

namespace sim {

// Counts one occurrence; true when it is the one that is to fail.
bool faultStrikes(Fault fault);

void failNthFault(Fault fault, int n);
int faultOccurrences(Fault fault);

// "allocation:3", "dispatch:1", "host:2" or "read:1"; false for anything else.
bool setFaultFromText(const std::string& text);

}  // namespace sim

#endif
