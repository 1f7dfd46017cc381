// Cleans up when a run is killed.
#ifndef TAV_TOOLS_PROCESS_GUARD_H
#define TAV_TOOLS_PROCESS_GUARD_H

#include <sys/types.h>

#include <functional>

namespace tools {

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

}  // namespace tools

#endif
