#include "simulator/scenario/failure.h"

#include <unistd.h>

#include "base/environment.h"
#include "base/json/writer.h"
#include "base/print_line.h"
#include "simulator/control/commands.h"
#include "simulator/control/watch.h"
#include "simulator/device/journal.h"
#include "simulator/language/explanation.h"

namespace tavsim {
namespace {

// On a terminal whose user has not asked for none.
bool isColoured() {
    return isatty(STDERR_FILENO) != 0 && base::environment("NO_COLOR").empty();
}

}  // namespace

std::string nameOf(const Step& step) {
    return step.place + ": " + base::shortened(step.text);
}

void tellProgress(const Step& step, const char* state, const std::string& reason) {
    const int line = std::stoi(step.place.substr(step.place.rfind(':') + 1));
    tellStep(line, step.text, state, reason);
}

std::string whatIsThere(const std::string& state) {
    for (const auto& [name, value] : stateValues()) {
        if (name == state) {
            return "it is " + value;
        }
    }
    return "there is no such state";
}

void tellFailure(const Step& step, const std::string& reason, const Pattern* pattern) {
    tellProgress(step, "failed", reason);
    const std::string line = nameOf(step) + ": " + reason;
    base::printLine(stderr, isColoured() ? "\x1b[31m" + line + "\x1b[0m" : line);
    const EntryLines lines(journalLines().begin(), journalLines().end());
    for (const std::string& each : journalEnd(lines, pattern)) {
        base::printLine(stderr, (each.starts_with("the journal") ? "  " : "    ") + each);
    }
}

}  // namespace tavsim
