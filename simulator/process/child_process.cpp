#include "simulator/process/child_process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <thread>
#include <utility>

#include "base/child.h"
#include "base/print_line.h"

namespace tavsim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kStep(1);  // between two checks whether a process has ended

// In the child, the application's signal handlers must not run, and the terminal's signals must not
// end it before the application.
void leaveApplication() {
    for (int number = 1; number < NSIG; ++number) {
        signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    setpgid(0, 0);
}

// One end of a new connection; negative, with errno, when there is none.
int connectTo(base::Descriptor* otherEnd) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return -1;
    }
    *otherEnd = base::Descriptor(ends[1]);
    return ends[0];
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
    return startWith([&](int socket) {
        return base::startChild([&] {
            leaveApplication();
            run(socket);
        });
    });
}

int ChildProcess::startProgram(const std::vector<std::string>& command, const std::string& folder,
                               base::Descriptor* output) {
    base::Descriptor theirOutput;
    *output = base::Descriptor(connectTo(&theirOutput));
    if (output->number() < 0) {
        return -1;
    }
    const std::vector<char*> arguments = base::pointersTo(command);
    const std::vector<char*> environment = environmentOfPrograms();
    return startWith([&](int input) {
        return base::startProgram([&] {
            leaveApplication();
            const int error = base::isStreamKept(stderr) ? -1 : open("/dev/null", O_WRONLY);
            base::setStandardStreams(input, theirOutput.number(), error);
            close_range(STDERR_FILENO + 1, ~0u, CLOSE_RANGE_CLOEXEC);
            if (chdir(folder.c_str()) == 0) {
                execvpe(arguments[0], arguments.data(), environment.data());
            }
        });
    });
}

int ChildProcess::startWith(const std::function<pid_t(int socket)>& start) {
    base::Descriptor theirs;
    const int ours = connectTo(&theirs);
    if (ours < 0) {
        return -1;
    }
    m_owner = getpid();
    m_process = start(theirs.number());
    if (m_process > 0) {
        return ours;
    }
    const int problem = errno;
    close(ours);
    errno = problem;
    return -1;
}

bool ChildProcess::isOurs() const {
    return m_process > 0 && getpid() == m_owner;
}

bool ChildProcess::hasEnded() const {
    siginfo_t found;
    found.si_pid = 0;
    const int flags = WEXITED | WNOHANG | WNOWAIT;
    return waitid(P_PID, static_cast<id_t>(m_process), &found, flags) != 0 || found.si_pid != 0;
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
