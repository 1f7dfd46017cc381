// A process beside the application's.
#ifndef TAV_SIMULATOR_PROCESS_CHILD_PROCESS_H
#define TAV_SIMULATOR_PROCESS_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "base/descriptor.h"

namespace tavsim {

// Goes when the application goes, however that ends. A fork of the application leaves it alone.
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess() { end(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Forks. The new process calls the function with its end of a connection and ends behind it;
    // it has none of the application's signal handlers, and is a process group of its own. Our end
    // of the connection comes back; a negative number, with errno, when there is no process.
    int start(const std::function<void(int socket)>& run);

    // The same for a program, in this folder. It is not on the device. The connection is its
    // standard input; what it writes on its standard output comes to `output`.
    int startProgram(const std::vector<std::string>& command, const std::string& folder,
                     base::Descriptor* output);

    pid_t number() const { return m_process; }

    // Whether it has ended, though what it has started may go on.
    bool hasEnded() const;
    bool waitForEnd(std::chrono::milliseconds longest) const;

    // False in a fork of the application.
    bool isOurs() const;

    // Waits so long for its end, then kills it, and in any case what it has started. Tells how it
    // ended: " with status 1". Empty when the application has waited for it.
    std::string end(std::chrono::milliseconds patience = {});

private:
    pid_t m_process = 0;
    pid_t m_owner = 0;
};

}  // namespace tavsim

#endif
