#include "simulator/scenario/failure.h"

#include <algorithm>

#include "base/json/writer.h"
#include "base/print_line.h"
#include "simulator/control/commands.h"
#include "simulator/device/journal.h"

namespace tavsim {
namespace {

constexpr size_t kLinesShown = 10;

void showJournal() {
    const auto& lines = journalLines();
    base::printLine(stderr, lines.empty() ? "  the journal is empty" : "  the journal ends with");
    const size_t shown = std::min(lines.size(), kLinesShown);
    std::for_each(lines.end() - static_cast<std::ptrdiff_t>(shown), lines.end(),
                  [](const std::string& line) { base::printLine(stderr, "  " + line); });
}

}  // namespace

std::string nameOf(const Step& step) {
    return step.place + ": " + base::shortened(step.text);
}

std::string whatIsThere(const std::string& state) {
    for (const auto& [name, value] : stateValues()) {
        if (name == state) {
            return "it is " + value;
        }
    }
    return "there is no such state";
}

void tellFailure(const Step& step, const std::string& reason) {
    base::printLine(stderr, nameOf(step) + ": " + reason);
    showJournal();
}

}  // namespace tavsim
