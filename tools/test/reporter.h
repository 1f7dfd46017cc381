// The output of `tavsim test`.
#ifndef TAV_TOOLS_TEST_REPORTER_H
#define TAV_TOOLS_TEST_REPORTER_H

#include <unistd.h>

#include <cstddef>
#include <vector>

#include "tools/test/result.h"

namespace tools {

// On a terminal, one line shows the progress.
class Reporter {
public:
    void tellProgress(size_t done, size_t all) const;

    // Prints the output of a scenario that has failed, and nothing for one that has passed.
    void tell(const TestResult& result) const;

    // The summary of so many scenarios; those without a result have not finished.
    void tellEnd(const std::vector<TestResult>& results, size_t all, double seconds) const;

private:
    const char* freshLine() const;

    bool m_isOnTerminal = isatty(STDOUT_FILENO) == 1;
};

}  // namespace tools

#endif
