// How the run of one scenario has ended.
#ifndef TAV_TOOLS_TEST_RESULT_H
#define TAV_TOOLS_TEST_RESULT_H

#include <cstddef>
#include <string>
#include <vector>

namespace tools {

struct TestResult {
    enum class Kind { Passed, Failed, NotRun };

    std::string scenario;  // its file
    int status = 0;        // as `tavsim run` has it
    double seconds = 0;
    std::string output;  // standard output and error, as they came

    Kind kind() const;

    // Why it has not passed, in one line: what the run said about a line of a scenario, if it did.
    std::string reason() const;

    // The output from there on; all of it otherwise.
    std::string details() const;

private:
    size_t reasonAt() const;
};

size_t count(const std::vector<TestResult>& results, TestResult::Kind kind);

}  // namespace tools

#endif
