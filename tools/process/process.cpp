#include "tools/process/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace tools {
namespace {

constexpr int kNotExecuted = 127;

// What the words are in C, for the program.
std::vector<char*> pointersTo(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words) {
        pointers.push_back(const_cast<char*>(word.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

void redirect(int to, int descriptor) {
    if (to >= 0) {
        dup2(to, descriptor);
    }
}

void leaveTerminal() {
    setpgid(0, 0);
    redirect(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
}

[[noreturn]] void become(const std::string& file, const std::vector<std::string>& words,
                         pid_t parent, int report, const Signals& signals, ProcessOutput output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    redirect(output.standard, STDOUT_FILENO);
    redirect(output.error, STDERR_FILENO);
    if (output.isApart) {
        leaveTerminal();
    }
    if (getppid() == parent) {
        signals.restore();
        const int problem = execute(file, words);
        [[maybe_unused]] const ssize_t written = write(report, &problem, sizeof problem);
    }
    _exit(kNotExecuted);
}

}  // namespace

int execute(const std::string& file, const std::vector<std::string>& words) {
    execv(file.c_str(), pointersTo(words).data());
    return errno;
}

int Process::start(const std::string& file, const std::vector<std::string>& words,
                   const Signals& signals, ProcessOutput output) {
    // Closed when the program is executed, and written to when it cannot be.
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        return errno;
    }
    const pid_t parent = getpid();
    m_id = fork();
    if (m_id == 0) {
        become(file, words, parent, report[1], signals, output);
    }
    int problem = m_id < 0 ? errno : 0;
    close(report[1]);
    if (m_id > 0 && read(report[0], &problem, sizeof problem) > 0) {
        waitpid(m_id, nullptr, 0);
    }
    close(report[0]);
    return problem;
}

bool Process::hasEnded() {
    return waitpid(m_id, &m_status, WNOHANG) == m_id;
}

void Process::send(int signal) const {
    kill(m_id, signal);
}

}  // namespace tools
