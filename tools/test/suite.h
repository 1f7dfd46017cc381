// Runs all scenarios of a `tavsim test`, several in parallel.
#pragma once

#include <chrono>
#include <list>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "tools/process/signals.h"
#include "tools/test/reporter.h"
#include "tools/test/result.h"
#include "tools/test/test.h"
#include "tools/test/test_run.h"

namespace tools {

class Suite {
public:
    Suite(const TestRequest& request, const std::vector<TestCase>& cases, const Signals& signals);

    // The signal that has ended it early; 0 for none.
    int run();

    // Of those that have ended, in the order of the cases.
    const std::vector<TestResult>& results() const { return m_results; }

    void tellEnd() const;
    double seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

private:
    using Clock = std::chrono::steady_clock;

    void startSome();
    void takeEnded();
    void waitForSomething();
    void takeSignals();
    void sendAll(int signal) const;

    const TestRequest& m_request;
    const std::vector<TestCase>& m_cases;
    const Signals& m_signals;
    size_t m_jobs;
    base::Descriptor m_signalled;
    Reporter m_reporter;
    std::list<TestRun> m_running;
    std::vector<TestResult> m_results;
    size_t m_next = 0;  // of the cases
    int m_askedToEnd = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_patience;  // when programs that were asked to end are killed
};

}  // namespace tools
