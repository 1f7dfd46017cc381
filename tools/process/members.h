// The processes of a run, whatever they have become and whoever has started them.
#ifndef TAV_TOOLS_PROCESS_MEMBERS_H
#define TAV_TOOLS_PROCESS_MEMBERS_H

#include <sys/types.h>

#include <string>

namespace tools {

// They are known by a mark in the environment, which they inherit from each other, also when the
// one that started them is gone.
class Members {
public:
    // Puts the mark of a new run into this process's environment. Those of runs around it stay, so
    // that its processes are theirs as well.
    Members();

    // Sends a signal, or none where it is 0. False when the process has ended, or is none of them.
    bool send(pid_t process, int signal) const;

    // Kills all of them, and those that they start meanwhile.
    void kill() const;

private:
    bool has(pid_t process) const;

    std::string m_mark;
};

}  // namespace tools

#endif
