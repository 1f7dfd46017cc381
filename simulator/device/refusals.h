// What the device refuses, beyond what its profile does.
#ifndef TAV_SIMULATOR_DEVICE_REFUSALS_H
#define TAV_SIMULATOR_DEVICE_REFUSALS_H

#include <limits>
#include <set>
#include <string>

#include "simulator/time/clock.h"

namespace tavsim {

struct Refusal {
    std::string request;  // as of canBeRefused
    Milliseconds until = std::numeric_limits<Milliseconds>::max();
    int nth = 0;  // the only request that is refused, counted from 1; 0: each
};

void addRefusal(Refusal refusal);

// Takes those of this request back, the profile's too.
void removeRefusals(const std::string& request);

// Whether this request, which is now made, is refused.
bool isRefused(const std::string& request);

// What is refused at some time or now.
std::set<std::string> refusedRequests();

void clearRefusals();

}  // namespace tavsim

#endif
