#include "tools/test/suite.h"

#include <poll.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include "tools/test/failed_cases.h"

namespace tools {
namespace {

constexpr std::chrono::seconds kGrace(5);
constexpr std::chrono::milliseconds kLongestWait(1000);

}  // namespace

Suite::Suite(const TestRequest& request, const std::vector<TestCase>& cases, const Signals& signals)
    : m_request(request),
      m_cases(cases),
      m_signals(signals),
      m_jobs(request.jobs > 0 ? request.jobs : std::max(1U, std::thread::hardware_concurrency())),
      m_signalled(signals.openDescriptor()),
      m_reporter(request.verbose) {
}

int Suite::run() {
    m_reporter.tellProgress(m_results, m_cases.size());
    while (startSome(), !m_running.empty()) {
        waitForSomething();
        takeSignals();
        takeEnded();
    }
    std::sort(m_results.begin(), m_results.end(),
              [](const auto& left, const auto& right) { return left.number < right.number; });
    return m_askedToEnd;
}

void Suite::tellEnd() const {
    m_reporter.tellSlowest(m_results);
    m_reporter.tellEnd(m_results, m_cases.size(), seconds());
}

void Suite::startSome() {
    while (m_askedToEnd == 0 && m_running.size() < m_jobs && m_next < m_cases.size()) {
        m_running.emplace_back(m_request, m_cases[m_next], m_next, m_signals);
        ++m_next;
    }
}

void Suite::waitForSomething() {
    std::vector<pollfd> awaited = {{m_signalled.number(), POLLIN, 0}};
    for (const TestRun& one : m_running) {
        awaited.push_back({one.output(), POLLIN, 0});
    }
    poll(awaited.data(), awaited.size(), static_cast<int>(kLongestWait.count()));
    for (TestRun& one : m_running) {
        one.takeOutput();
    }
}

void Suite::takeSignals() {
    int signal = 0;
    while ((signal = m_signals.take(Clock::now()).si_signo) != 0) {
        if (signal == SIGCHLD) {
            continue;
        }
        if (m_askedToEnd == 0) {
            m_askedToEnd = signal;
            m_patience = Clock::now() + kGrace;
            sendAll(SIGTERM);
        } else if (Clock::now() > m_patience - kGrace + kSameRequest) {
            m_patience = Clock::now();
        }
    }
    if (m_askedToEnd != 0 && Clock::now() >= m_patience) {
        sendAll(SIGKILL);  // each has a guard that cleans up
    }
}

void Suite::takeEnded() {
    for (auto one = m_running.begin(); one != m_running.end();) {
        if (!one->hasEnded()) {
            ++one;
            continue;
        }
        if (m_askedToEnd == 0) {
            m_reporter.tell(one->result());
            m_results.push_back(one->result());
            rememberWhetherFailed(one->result());
            m_reporter.tellProgress(m_results, m_cases.size());
        }
        one = m_running.erase(one);
    }
}

void Suite::sendAll(int signal) const {
    for (const TestRun& one : m_running) {
        one.send(signal);
    }
}

}  // namespace tools
