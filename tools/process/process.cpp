#include "tools/process/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "base/child.h"

namespace tools {

int execute(const std::string& file, const std::vector<std::string>& words) {
    execv(file.c_str(), base::pointersTo(words).data());
    return errno;
}

int Process::start(const std::string& file, const std::vector<std::string>& words,
                   const Signals& signals, ProcessOutput output) {
    m_id = base::startProgram([&] {
        int input = -1;
        if (output.isApart) {
            setpgid(0, 0);
            input = open("/dev/null", O_RDONLY | O_CLOEXEC);
        }
        base::setStandardStreams(input, output.standard, output.error);
        signals.restore();
        execute(file, words);
    });
    return m_id < 0 ? errno : 0;
}

bool Process::hasEnded() {
    return waitpid(m_id, &m_status, WNOHANG) == m_id;
}

void Process::send(int signal) const {
    kill(m_id, signal);
}

}  // namespace tools
