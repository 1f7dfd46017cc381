// The processes of a run, including those whose parents have ended.
#pragma once

#include <sys/types.h>

#include <string>

namespace tools {

// They are found by a mark in the environment, which processes inherit.
class Members {
public:
    // Adds the mark of a new run to this process's environment. The marks of enclosing runs stay,
    // so that its processes belong to those too.
    Members();

    // Sends a signal, or only checks with 0. False when the process has ended or does not belong to
    // the run.
    bool send(pid_t process, int signal) const;

    // Kills all of them, including those that they start meanwhile.
    void kill() const;

private:
    bool has(pid_t process) const;

    std::string m_mark;
};

}  // namespace tools
