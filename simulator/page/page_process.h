// The process in which the page's script runs.
#ifndef TAV_SIMULATOR_PAGE_PAGE_PROCESS_H
#define TAV_SIMULATOR_PAGE_PAGE_PROCESS_H

namespace tavsim {

// Runs in the new process after the fork. It closes all descriptors of the application but its end
// of the connection and standard error, serves the device until the connection is closed, and ends.
[[noreturn]] void runPageProcess(int socket);

}  // namespace tavsim

#endif
