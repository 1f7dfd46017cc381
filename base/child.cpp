#include "base/child.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "base/descriptor.h"

namespace base {

pid_t startChild(const std::function<void()>& run) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) {
        run();
    }
    _exit(EXIT_FAILURE);
}

pid_t startProgram(const std::function<void()>& become) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return -1;
    }
    // Closed when the program is executed, and written to when it cannot be.
    const Descriptor report(ends[0]);
    Descriptor childs(ends[1]);
    const pid_t child = startChild([&] {
        become();
        const int problem = errno;
        (void)!write(childs.number(), &problem, sizeof problem);
    });
    if (child < 0) {
        return child;
    }
    childs.close();
    int problem = 0;
    ssize_t size = 0;
    while ((size = read(report.number(), &problem, sizeof problem)) < 0 && errno == EINTR) {}
    if (size <= 0) {
        return child;
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {}
    errno = problem;
    return -1;
}

void setStandardStreams(int input, int output, int error) {
    int streams[] = {input, output, error};
    for (int& stream : streams) {  // copied first, as one may have the number of another
        stream = stream < 0 ? -1 : fcntl(stream, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    }
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (streams[number] >= 0) {
            dup2(streams[number], number);
        }
    }
}

std::vector<char*> pointersTo(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words) {
        pointers.push_back(const_cast<char*>(word.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

}  // namespace base
