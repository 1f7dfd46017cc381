// What `tavsim test` prints.
#ifndef TAV_TOOLS_TEST_REPORTER_H
#define TAV_TOOLS_TEST_REPORTER_H

#include <unistd.h>

#include <cstddef>
#include <vector>

#include "tools/test/result.h"

namespace tools {

// On a terminal one line shows how far it has come.
class Reporter {
public:
    void tellProgress(size_t done, size_t all) const;

    // With its output where it has not passed, and nothing where it has.
    void tell(const TestResult& result) const;

    // Of so many; those without a result have not finished.
    void tellEnd(const std::vector<TestResult>& results, size_t all, double seconds) const;

private:
    const char* freshLine() const;

    bool m_isOnTerminal = isatty(STDOUT_FILENO) == 1;
};

}  // namespace tools

#endif
