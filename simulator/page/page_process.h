// The process in which the page's script runs.
//
// The device sends an event and then answers the page's questions until the page is idle again.
#pragma once

namespace tavsim {

// Runs in the new process after the fork. It closes all descriptors of the application but its end
// of the connection and standard error, serves the device until the connection is closed, and ends.
[[noreturn]] void runPageProcess(int socket);

}  // namespace tavsim
