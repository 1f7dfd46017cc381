// Scenarios. Input: the file, which can include itself.
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz.h"
#include "simulator/scenario/reader.h"

using tavfuzz::expect;

namespace {

constexpr int kDescriptor = 200;
constexpr char kFile[] = "/proc/self/fd/200";
constexpr char kPlace[] = "/proc/self/fd/";  // other open files can be included too

void expectSteps(const tavsim::Scenario& scenario) {
    for (const tavsim::Step& step : scenario.steps) {
        expect(step.place.starts_with(kPlace), "a step has a place");
        expect(!step.text.empty() && step.text.find('\n') == std::string::npos,
               "a step is one line");
    }
    expect(scenario.steps.size() <= 10000, "there are no more steps than allowed");
    expect(!scenario.limit || *scenario.limit > 0, "the limit lies ahead");
    expect(scenario.program.empty() || !scenario.program[0].empty(), "a program has a name");
}

}  // namespace

// The file is in memory. As "200", its descriptor, it can include itself.
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    expect(dup2(memfd_create("scenario", 0), kDescriptor) == kDescriptor, "there is a file");
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    expect(ftruncate(kDescriptor, 0) == 0 &&
               pwrite(kDescriptor, bytes, size, 0) == static_cast<ssize_t>(size),
           "the input is written");
    std::string error;
    std::optional<tavsim::Scenario> scenario = tavsim::readScenario(kFile, {}, &error);
    if (scenario && !scenario->rows.empty()) {
        expect(scenario->steps.empty(), "a row is to be chosen");
        scenario = tavsim::readScenario(kFile, scenario->rows.back(), &error);
    }
    if (scenario) {
        expect(error.empty(), "a scenario that was read has no error");
        expectSteps(*scenario);
        return 0;
    }
    tavfuzz::expectOneLine(error, kPlace);
    return 0;
}
