// The program as a process, and the processes of a run.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "tools/process/signals.h"

namespace tools {

// Where a child's output goes; negative: where this process's does.
struct ProcessOutput {
    int standard = -1;
    int error = -1;
    bool isApart = false;  // with no standard input, and out of the keyboard's reach
};

// Makes this process the program; the words are its name and its arguments. Returns only an error
// number.
int execute(const std::string& file, const std::vector<std::string>& words);

// Lets the program draw nowhere, unless the user chose, when its picture is shown by the page: then
// it needs no window. Changes this process's environment, which the program inherits.
void drawInPage(const std::string& page);

// A child that is killed when this process is.
class Process {
public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The words are the program's name and its arguments. Returns an error number.
    int start(const std::string& file, const std::vector<std::string>& words,
              const Signals& signals, ProcessOutput output = {});

    pid_t id() const { return m_id; }

    // Whether it has ended, and as waitpid() tells it.
    bool hasEnded();
    int status() const { return m_status; }

    void send(int signal) const;

    // Also works in a process that is not its parent. Gives up after some seconds.
    void waitForEnd() const;

private:
    pid_t m_id = 0;
    int m_status = 0;
    base::Descriptor m_handle;
};

// A signal's name and meaning.
std::string describe(int signal);

// How a program has ended, from its status as of waitpid(): in a sentence, and as the exit status
// that a shell would give.
std::string howEnded(int status);
int exitStatus(int status);

// As long as this object exists, a child process waits for this process to die, and then cleans up.
class Guard {
public:
    explicit Guard(const std::function<void()>& cleanUp);
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    pid_t m_process;
};

// The processes of a run, including those whose parents have ended. They are found by a mark in the
// environment, which processes inherit.
class Members {
public:
    // Adds the mark of a new run to this process's environment. The marks of enclosing runs stay,
    // so that its processes belong to those too.
    Members();

    // Sends a signal, or only checks with 0. False when the process has ended or does not belong to
    // the run.
    bool send(pid_t process, int signal) const;

    // Kills all of them, including those that they start meanwhile, and waits until they have
    // ended.
    void kill() const;

private:
    bool has(pid_t process) const;
    base::Descriptor signalled(pid_t process, int signal) const;

    std::string m_mark;
};

}  // namespace tools
