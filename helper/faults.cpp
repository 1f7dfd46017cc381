#include "helper/faults.h"

#include <atomic>
#include <charconv>

namespace helper {
namespace {

struct Plan {
    const char* name;
    std::atomic<int> failing;  // files are opened on any thread
    std::atomic<int> occurred;
};

// In the order of Fault.
Plan g_plans[] = {{"allocation", 0, 0}, {"dispatch", 0, 0}, {"host", 0, 0}, {"read", 0, 0}};

Plan& planOf(Fault fault) {
    return g_plans[static_cast<int>(fault)];
}

}  // namespace

bool faultStrikes(Fault fault) {
    Plan& plan = planOf(fault);
    return ++plan.occurred == plan.failing;
}

void failNthFault(Fault fault, int n) {
    planOf(fault).failing = n;
    planOf(fault).occurred = 0;
}

int faultOccurrences(Fault fault) {
    return planOf(fault).occurred;
}

bool setFaultFromText(const std::string& text) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return false;
    }
    int n = 0;
    const char* end = text.data() + text.size();
    const auto [rest, problem] = std::from_chars(text.data() + colon + 1, end, n);
    if (problem != std::errc() || rest != end || n < 1) {
        return false;
    }
    for (Plan& plan : g_plans) {
        if (text.compare(0, colon, plan.name) == 0) {
            plan.failing = n;
            plan.occurred = 0;
            return true;
        }
    }
    return false;
}

}  // namespace helper
