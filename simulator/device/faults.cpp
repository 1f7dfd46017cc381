#include "simulator/device/faults.h"

#include <atomic>
#include <charconv>
#include <limits>

#include "helper/failing.h"

namespace tavsim {
namespace {

struct Plan {
    const char* name;
    std::atomic<int> first = 0;  // files are opened on any thread
    std::atomic<int> last = 0;
    std::atomic<int> occurred = 0;
};

constexpr int kForEver = std::numeric_limits<int>::max();

// In the order of Fault.
Plan g_plans[] = {{"allocation"}, {"dispatch"}, {"host"}, {"read"}};

Plan& planOf(Fault fault) {
    return g_plans[static_cast<int>(fault)];
}

// The helper library's operations count with the device's own.
bool helperFails(helper::Operation operation) {
    return faultStrikes(operation == helper::Operation::Read ? Fault::Read : Fault::Allocation);
}

void setPlan(Plan& plan, int first, int last) {
    helper::g_isToFail = helperFails;
    plan.first = first;
    plan.last = last;
    plan.occurred = 0;
}

}  // namespace

bool faultStrikes(Fault fault) {
    Plan& plan = planOf(fault);
    const int occurrence = ++plan.occurred;
    return occurrence >= plan.first && occurrence <= plan.last;
}

void failNthFault(Fault fault, int n) {
    setPlan(planOf(fault), n, n);
}

void failFaultsFrom(Fault fault, int n) {
    setPlan(planOf(fault), n, n > 0 ? kForEver : 0);
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
    const bool isForEver = text.back() == '+';
    const char* end = text.data() + text.size() - (isForEver ? 1 : 0);
    const auto [rest, problem] = std::from_chars(text.data() + colon + 1, end, n);
    if (problem != std::errc() || rest != end || n < 1) {
        return false;
    }
    for (Plan& plan : g_plans) {
        if (text.compare(0, colon, plan.name) == 0) {
            setPlan(plan, n, isForEver ? kForEver : n);
            return true;
        }
    }
    return false;
}

}  // namespace tavsim
