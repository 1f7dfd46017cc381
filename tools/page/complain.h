// Problems, as the user is told them.
#pragma once

#include <cstdio>
#include <set>
#include <string>

#include "tools/process/exit_status.h"

namespace page {

// Says on standard error what is wrong, and hands the status back.
inline int complain(const std::string& text) {
    std::fprintf(stderr, "tav-page: %s\n", text.c_str());
    return tools::kBadSetup;
}

// The same for what can happen again and again, and need not be said again.
inline void complainOnce(const std::string& text) {
    static std::set<std::string> told;
    if (told.insert(text).second) {
        complain(text);
    }
}

}  // namespace page
