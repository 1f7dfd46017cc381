// How the run of one scenario has ended.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/test/scenario_files.h"

namespace tools {

struct TestResult {
    enum class Kind { Passed, Failed, NotRun };

    size_t number = 0;  // of the case, from 0
    TestCase what;
    int status = 0;  // as `tavsim run` has it
    double seconds = 0;
    std::string output;              // standard output and error, as they came
    std::vector<std::string> notes;  // lines to show even where it has passed

    Kind kind() const;

    // Why it has failed, in one line: the message about a line of a scenario, if there is one.
    std::string reason() const;

    // The line that stands over its output.
    std::string headline() const;

    // The output from that message on, or all of it.
    std::string details() const;

private:
    size_t reasonAt() const;
};

size_t count(const std::vector<TestResult>& results, TestResult::Kind kind);

}  // namespace tools
