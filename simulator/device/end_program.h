// Ends a program whose set-up is wrong.
#ifndef TAV_SIMULATOR_DEVICE_END_PROGRAM_H
#define TAV_SIMULATOR_DEVICE_END_PROGRAM_H

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "base/print_line.h"

namespace tavsim {

// Says why on standard error and ends the process with status 2.
[[noreturn]] inline void endProgram(const std::string& reason) {
    constexpr int kBadSetup = 2;
    static bool isEnding = false;
    base::printLine(stderr, "tavsim: " + reason);
    if (std::exchange(isEnding, true)) {
        _exit(kBadSetup);  // handlers of exit() would fail again
    }
    std::exit(kBadSetup);
}

}  // namespace tavsim

#endif
