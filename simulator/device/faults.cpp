#include "simulator/device/faults.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <optional>

#include "base/number.h"
#include "helper/failing.h"

namespace tavsim {
namespace {

struct Plan {
    std::string_view name;
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

struct FaultText {
    Plan* plan;
    int n;
    bool isForEver;
};

std::optional<FaultText> readFault(std::string_view text) {
    const size_t colon = text.find(':');
    auto* const plan = std::ranges::find(g_plans, text.substr(0, colon), &Plan::name);
    if (colon == std::string_view::npos || plan == std::end(g_plans)) {
        return std::nullopt;
    }
    const bool isForEver = text.ends_with('+');
    text.remove_suffix(isForEver ? 1 : 0);
    const int n = base::numberIn<int>(text.substr(colon + 1)).value_or(0);
    return n > 0 ? std::optional(FaultText{plan, n, isForEver}) : std::nullopt;
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

bool isFaultText(std::string_view text) {
    return readFault(text).has_value();
}

bool setFaultFromText(std::string_view text) {
    const std::optional<FaultText> read = readFault(text);
    if (read) {
        setPlan(*read->plan, read->n, read->isForEver ? kForEver : read->n);
    }
    return read.has_value();
}

}  // namespace tavsim
