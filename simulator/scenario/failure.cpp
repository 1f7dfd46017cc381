#include "simulator/scenario/failure.h"

#include <algorithm>
#include <cstdio>

#include "helper/json/writer.h"
#include "simulator/control/command_functions.h"
#include "simulator/device/journal.h"

namespace tavsim {
namespace {

constexpr size_t kLinesShown = 10;

void showJournal() {
    const auto& lines = journalLines();
    std::fputs(lines.empty() ? "  the journal is empty\n" : "  the journal ends with\n", stderr);
    const size_t shown = std::min(lines.size(), kLinesShown);
    std::for_each(lines.end() - static_cast<std::ptrdiff_t>(shown), lines.end(),
                  [](const std::string& line) { std::fprintf(stderr, "  %s\n", line.c_str()); });
}

}  // namespace

std::string nameOf(const Step& step) {
    return step.place + ": " + helper::shortened(step.text);
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
    std::fprintf(stderr, "%s: %s\n", nameOf(step).c_str(), reason.c_str());
    showJournal();
}

}  // namespace tavsim
