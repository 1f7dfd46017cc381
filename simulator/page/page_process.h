// The process in which the page's script runs.
#ifndef TAV_SIMULATOR_PAGE_PAGE_PROCESS_H
#define TAV_SIMULATOR_PAGE_PAGE_PROCESS_H

namespace tavsim {

// What the new process does after the fork: keeps nothing of the application but its end of the
// connection and standard error, serves the device until that is gone, and ends.
[[noreturn]] void runPageProcess(int socket);

}  // namespace tavsim

#endif
