// The end of a program that cannot have what it was started with.
#ifndef TAV_HELPER_END_PROGRAM_H
#define TAV_HELPER_END_PROGRAM_H

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace helper {

// Says why on standard error and ends the process with status 2.
[[noreturn]] inline void endProgram(const std::string& reason) {
    constexpr int kBadSetup = 2;
    static bool isEnding = false;
    std::fprintf(stderr, "tavsim: %s\n", reason.c_str());
    if (std::exchange(isEnding, true)) {
        _exit(kBadSetup);  // what runs at the exit has the same problem again
    }
    std::exit(kBadSetup);
}

}  // namespace helper

#endif
