// Child processes of the simulated device.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "base/descriptor.h"

namespace tavsim {

// Ends with the application, even if that is killed. A fork of the application leaves it alone.
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess() { end(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Forks. The new process calls the function with its end of a connection, and then ends. It has
    // none of the application's signal handlers, and a process group of its own. Returns our end of
    // the connection; a negative number, with errno, on failure.
    int start(const std::function<void(int socket)>& run);

    // The same for a program, with this working directory. It is not on the device. The connection
    // is its standard input; `output` is the other end of its standard output.
    int startProgram(const std::vector<std::string>& command, const std::string& folder,
                     base::Descriptor* output);

    pid_t number() const { return m_process; }

    // Whether it has ended. Processes that it started may still run.
    bool hasEnded() const;
    bool waitForEnd(std::chrono::milliseconds longest) const;

    // False in a fork of the application.
    bool isOurs() const;

    // Waits this long for its end, then kills it, and always kills the processes that it started.
    // Returns how it ended: " with status 1". Empty when the application has waited for it.
    std::string end(std::chrono::milliseconds patience = {});

private:
    int startWith(const std::function<pid_t(int socket)>& start);

    pid_t m_process = 0;
    pid_t m_owner = 0;
};

}  // namespace tavsim
