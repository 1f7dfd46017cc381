#include "simulator/device/refusals.h"

#include <utility>
#include <vector>

#include "simulator/device/faults.h"
#include "simulator/device/running.h"

namespace tavsim {
namespace {

std::vector<Refusal>& refusals() {
    static auto& instance = *new std::vector<Refusal>;
    return instance;
}

void forgetThoseThatAreOver() {
    std::erase_if(refusals(), [](const Refusal& one) { return one.until <= now(); });
}

}  // namespace

void addRefusal(Refusal refusal) {
    refusals().push_back(std::move(refusal));
}

void removeRefusals(const std::string& request) {
    profile().refused.erase(request);
    std::erase_if(refusals(), [&](const Refusal& one) { return one.request == request; });
}

bool isRefused(const std::string& request) {
    forgetThoseThatAreOver();
    bool refused = profile().refused.contains(request);
    std::erase_if(refusals(), [&](Refusal& one) {
        if (one.request != request) {
            return false;
        }
        const bool isCounted = one.nth > 0;
        const bool strikes = !isCounted || --one.nth == 0;
        refused = refused || strikes;
        return isCounted && strikes;
    });
    return refused;
}

std::set<std::string> refusedRequests() {
    forgetThoseThatAreOver();
    std::set<std::string> requests = profile().refused;
    for (const Refusal& refusal : refusals()) {
        requests.insert(refusal.request);
    }
    return requests;
}

void clearRefusals() {
    refusals().clear();
}

bool hostAccepts(const char* request) {
    running();
    const bool refused = isRefused(request);
    return !faultStrikes(Fault::HostRequest) && !refused;
}

const char* acceptance(bool accepts) {
    return accepts ? "accepted" : "refused";
}

}  // namespace tavsim
