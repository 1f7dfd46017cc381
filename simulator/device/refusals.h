// Refusals of requests, in addition to those of the profile.
#pragma once

#include <limits>
#include <set>
#include <string>

#include "simulator/time/clock.h"

namespace tavsim {

struct Refusal {
    std::string request;  // as of canBeRefused
    Milliseconds until = std::numeric_limits<Milliseconds>::max();
    int nth = 0;  // only the n-th request is refused, counted from 1; 0: every request
};

void addRefusal(Refusal refusal);

// Removes the refusals of this request, the profile's too.
void removeRefusals(const std::string& request);

// Called for each request: whether it is refused.
bool isRefused(const std::string& request);

// All requests that are refused now or later.
std::set<std::string> refusedRequests();

void clearRefusals();

// False when the profile, a command or an injected fault makes the host refuse this request.
bool hostAccepts(const char* request);

// "accepted" or "refused", for the journal.
const char* acceptance(bool accepts);

}  // namespace tavsim
