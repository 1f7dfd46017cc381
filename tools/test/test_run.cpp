#include "tools/test/test_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <vector>

#include "simulator/control/commands.h"
#include "tools/process/exit_status.h"
#include "tools/test/junit.h"

namespace tools {
namespace {

constexpr char kOwnFile[] = "/proc/self/exe";

// The end of a longer output is kept.
constexpr size_t kMostOutput = 1 << 20;
constexpr int kMostReads = 64;  // at once, so that an endless output does not block the other runs
constexpr char kExpectsNothing[] = ": expects nothing, so it passes unless the program fails";
constexpr char kLeftOut[] = "[what came before is left out]\n";

std::vector<std::string> commandLine(const TestRequest& request, const TestCase& what,
                                     size_t number) {
    std::vector<std::string> words = {"tavsim", "run", "--virtual-time", "--scenario",
                                      what.scenario};
    if (!what.row.empty()) {
        words.insert(words.end(), {"--row", what.row});
    }
    if (request.updatePictures) {
        words.emplace_back("--update-pictures");
    }
    if (!request.junit.empty()) {
        words.insert(words.end(),
                     {"--differences", differencesFolder(request.junit, number, what)});
    }
    if (!request.device.empty()) {
        words.insert(words.end(), {"--device", request.device});
    }
    const std::string& program = request.program.empty() ? what.program : request.program;
    if (!program.empty()) {
        words.insert(words.end(), {"--", program});
    }
    return words;
}

}  // namespace

TestRun::TestRun(const TestRequest& request, const TestCase& what, size_t number,
                 const Signals& signals) {
    m_result.number = number;
    m_result.what = what;
    int ends[2];
    int problem = pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0 ? 0 : errno;
    if (problem == 0) {
        m_output = base::Descriptor(ends[0]);
        fcntl(ends[1], F_SETFL, 0);  // which the programs share
        problem = m_process.start(kOwnFile, commandLine(request, what, number), signals,
                                  {ends[1], ends[1], true});
        close(ends[1]);
    }
    m_isStarted = problem == 0;
    if (problem != 0) {
        m_result.status = kCannotStart;
        m_result.output = what.scenario + ": " + std::strerror(problem) + "\n";
    }
}

void TestRun::takeOutput() {
    std::string& text = m_result.output;
    char bytes[1 << 14];
    for (int reads = 0; output() >= 0 && reads < kMostReads; ++reads) {
        const ssize_t taken = read(output(), bytes, sizeof bytes);
        if (taken < 0) {
            return;
        }
        text.append(bytes, static_cast<size_t>(taken));
        if (text.size() > 2 * kMostOutput) {
            text.replace(0, text.size() - kMostOutput, kLeftOut);
        }
        if (taken == 0) {
            m_output.close();
        }
    }
}

bool TestRun::hasEnded() {
    if (m_isStarted && !m_process.hasEnded()) {
        return false;
    }
    takeOutput();
    if (m_isStarted) {
        m_result.status = exitStatus(m_process.status());
    }
    takeNotes();
    m_result.seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    return true;
}

// What is to be told of a case that has passed.
void TestRun::takeNotes() {
    std::istringstream lines(m_result.output);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(tavsim::kWrittenAnew) != std::string::npos) {
            m_result.notes.push_back(line);
        }
    }
    if (m_result.kind() == TestResult::Kind::Passed && expectsNothing(m_result.what)) {
        m_result.notes.push_back(m_result.what.name() + kExpectsNothing);
        m_result.output += m_result.notes.back() + "\n";
    }
}

}  // namespace tools
