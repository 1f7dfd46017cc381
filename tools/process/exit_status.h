// How the commands end, as the shell sees it.
#pragma once

#include <cstdio>
#include <string>

#include "simulator/device/edge.h"

namespace tools {

using tavsim::kBadSetup;  // also of what is wrong with the command line

inline constexpr int kTimedOut = 124;
inline constexpr int kCannotStart = 127;
inline constexpr int kDeathBySignal = 128;  // and the signal's number

// Says on standard error what is wrong, and hands the status back.
inline int complain(const std::string& text, int status = kBadSetup) {
    std::fprintf(stderr, "tavsim: %s\n", text.c_str());
    return status;
}

}  // namespace tools
