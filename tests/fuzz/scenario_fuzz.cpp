// Scenarios. Input: the file, which can include itself.
#include <unistd.h>

#include "fuzz.h"
#include "simulator/scenario/reader.h"

using tavfuzz::expect;

namespace {

constexpr char kFile[] = "main";

void expectSteps(const tavsim::Scenario& scenario) {
    for (const tavsim::Step& step : scenario.steps) {
        expect(step.place.starts_with("main:"), "a step has a place");
        expect(!step.text.empty() && step.text.find('\n') == std::string::npos,
               "a step is one line");
    }
    expect(scenario.steps.size() <= 10000, "there are no more steps than allowed");
    expect(!scenario.limit || *scenario.limit > 0, "the limit lies ahead");
    expect(scenario.program.empty() || !scenario.program[0].empty(), "a program has a name");
}

}  // namespace

// In a folder in which nothing else can be included.
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    const char* const chosen = std::getenv("TMPDIR");
    std::string folder =
        std::string(chosen != nullptr ? chosen : P_tmpdir) + "/scenario-fuzz-XXXXXX";
    expect(mkdtemp(folder.data()) != nullptr && chdir(folder.c_str()) == 0, "there is a folder");
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FILE* const file = std::fopen(kFile, "w");
    expect(file != nullptr && std::fwrite(bytes, 1, size, file) == size && std::fclose(file) == 0,
           "the input is written");
    std::string error;
    const std::optional<tavsim::Scenario> scenario = tavsim::readScenario(kFile, &error);
    if (scenario) {
        expect(error.empty(), "a scenario that was read has no error");
        expectSteps(*scenario);
        return 0;
    }
    expect(error.starts_with("main:"), "an error names the file");
    expect(error.find('\n') == std::string::npos, "an error is one line");
    return 0;
}
