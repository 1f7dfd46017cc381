#include "simulator/process/child_process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

#include "base/print_line.h"

namespace tavsim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kStep(1);  // between two checks whether a process has ended
constexpr std::chrono::seconds kLongestEnd(1);

// In the child, the application's signal handlers must not run, and the terminal's signals must not
// end it before the application.
void leaveApplication(pid_t application) {
    for (int number = 1; number < NSIG; ++number) {
        signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != application) {
        _exit(EXIT_SUCCESS);
    }
}

bool connect(base::Descriptor* one, base::Descriptor* other) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return false;
    }
    *one = base::Descriptor(ends[0]);
    *other = base::Descriptor(ends[1]);
    return true;
}

bool isChild(pid_t process) {
    siginfo_t unused;
    return waitid(P_PID, static_cast<id_t>(process), &unused, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// The mark of the run stays, so that the run ends the processes that such a program starts.
bool isOfDevice(std::string_view variable) {
    return (variable.starts_with("TAVSIM_") && !variable.starts_with("TAVSIM_RUN=")) ||
           variable.starts_with("LD_PRELOAD=");
}

// With a null pointer at the end, as the kernel wants it.
std::vector<char*> pointersTo(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words) {
        pointers.push_back(const_cast<char*>(word.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<char*> environmentOfPrograms() {
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (!isOfDevice(*variable)) {
            variables.push_back(*variable);
        }
    }
    variables.push_back(nullptr);
    return variables;
}

}  // namespace

int ChildProcess::start(const std::function<void(int socket)>& run) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return -1;
    }
    m_owner = getpid();
    m_process = fork();
    if (m_process == 0) {
        leaveApplication(m_owner);
        run(ends[1]);
        _exit(EXIT_FAILURE);
    }
    const int problem = errno;
    close(ends[1]);
    if (m_process < 0) {
        close(ends[0]);
        errno = problem;
    }
    return m_process > 0 ? ends[0] : -1;
}

int ChildProcess::startProgram(const std::vector<std::string>& command, const std::string& folder,
                               base::Descriptor* output) {
    // Closed without a message when the program is executed.
    base::Descriptor problem;
    base::Descriptor theirs;
    base::Descriptor theirOutput;
    if (!connect(&problem, &theirs) || !connect(output, &theirOutput)) {
        return -1;
    }
    const std::vector<char*> arguments = pointersTo(command);
    const std::vector<char*> environment = environmentOfPrograms();
    const int socket = start([&](int end) {
        const int input = fcntl(end, F_DUPFD, STDERR_FILENO + 1);
        dup2(fcntl(theirOutput.number(), F_DUPFD, STDERR_FILENO + 1), STDOUT_FILENO);
        dup2(input, STDIN_FILENO);
        if (!base::isStreamKept(stderr)) {
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        }
        close_range(STDERR_FILENO + 1, ~0u, CLOSE_RANGE_CLOEXEC);
        if (chdir(folder.c_str()) == 0) {
            execvpe(arguments[0], arguments.data(), environment.data());
        }
        const int reason = errno;
        (void)!write(theirs.number(), &reason, sizeof reason);
    });
    theirs.close();
    theirOutput.close();
    int reason = 0;
    if (socket >= 0 && read(problem.number(), &reason, sizeof reason) == sizeof reason) {
        close(socket);
        end(kLongestEnd);
        errno = reason;
        return -1;
    }
    return socket;
}

bool ChildProcess::isOurs() const {
    return m_process > 0 && getpid() == m_owner;
}

bool ChildProcess::hasEnded() const {
    siginfo_t end;
    end.si_pid = 0;
    const int flags = WEXITED | WNOHANG | WNOWAIT;
    return waitid(P_PID, static_cast<id_t>(m_process), &end, flags) != 0 || end.si_pid != 0;
}

bool ChildProcess::waitForEnd(milliseconds longest) const {
    for (; longest > kStep && !hasEnded(); longest -= kStep) {
        std::this_thread::sleep_for(kStep);
    }
    return hasEnded();
}

std::string ChildProcess::end(milliseconds patience) {
    if (isOurs()) {
        waitForEnd(patience);
    }
    const bool wasOurs = isOurs();
    const pid_t process = std::exchange(m_process, 0);
    // The application may have waited for all its children; another process may have this number by
    // now.
    if (!wasOurs || !isChild(process)) {
        return "";
    }
    kill(-process, SIGKILL);
    kill(process, SIGKILL);
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            return "";
        }
    }
    return WIFSIGNALED(status) ? " with signal " + std::to_string(WTERMSIG(status))
                               : " with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace tavsim
