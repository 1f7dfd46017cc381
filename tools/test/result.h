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

    // Why it has failed, in one line: the message about a line of a scenario, if there is one.
    std::string reason() const;

    // The output from that message on, or all of it.
    std::string details() const;

private:
    size_t reasonAt() const;
};

size_t count(const std::vector<TestResult>& results, TestResult::Kind kind);

}  // namespace tools

#endif
