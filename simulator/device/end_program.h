// Ends a program whose set-up is wrong.
#ifndef TAV_SIMULATOR_DEVICE_END_PROGRAM_H
#define TAV_SIMULATOR_DEVICE_END_PROGRAM_H

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "base/print_line.h"

namespace tavsim {

// The exit status of a program that cannot have its device, and of `tavsim` itself.
inline constexpr int kBadSetup = 2;

// Says why on standard error and ends the process with that status.
[[noreturn]] inline void endProgram(const std::string& reason) {
    static bool isEnding = false;
    base::printLine(stderr, "tavsim: " + reason);
    if (std::exchange(isEnding, true)) {
        _exit(kBadSetup);  // handlers of exit() would fail again
    }
    std::exit(kBadSetup);
}

}  // namespace tavsim

#endif
