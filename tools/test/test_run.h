// The run of one scenario, in a process of its own.
#pragma once

#include <chrono>
#include <string>

#include "base/descriptor.h"
#include "tools/process/process.h"
#include "tools/process/signals.h"
#include "tools/test/result.h"
#include "tools/test/test.h"

namespace tools {

class TestRun {
public:
    TestRun(const TestRequest& request, const TestCase& what, size_t number,
            const Signals& signals);

    // A descriptor that is readable when there is output; negative at the end of the output.
    int output() const { return m_output.number(); }
    void takeOutput();

    // Whether it has ended; then the result is complete.
    bool hasEnded();
    const TestResult& result() const { return m_result; }

    void send(int signal) const { m_process.send(signal); }

private:
    void takeNotes();

    using Clock = std::chrono::steady_clock;

    TestResult m_result;
    Process m_process;
    base::Descriptor m_output;
    bool m_isStarted = false;
    Clock::time_point m_start = Clock::now();
};

}  // namespace tools
