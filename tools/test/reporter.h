// The output of `tavsim test`.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <vector>

#include "tools/test/result.h"

namespace tools {

// On a terminal, one line shows the progress.
class Reporter {
public:
    explicit Reporter(bool isVerbose) : m_isVerbose(isVerbose) {}

    void tellProgress(const std::vector<TestResult>& results, size_t all) const;

    // Prints the output of a scenario that has failed, and the notes of one that has passed.
    void tell(const TestResult& result) const;

    void tellSlowest(std::vector<TestResult> results) const;

    // The summary of so many scenarios; those without a result have not finished.
    void tellEnd(const std::vector<TestResult>& results, size_t all, double seconds) const;

private:
    const char* freshLine() const;

    bool m_isVerbose;
    bool m_isOnTerminal = isatty(STDOUT_FILENO) == 1;
};

}  // namespace tools
