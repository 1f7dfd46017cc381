// Problems, as the user is told them.
#pragma once

#include <cstdio>
#include <string>

#include "tools/process/exit_status.h"

namespace page {

// Says on standard error what is wrong, and hands the status back.
inline int complain(const std::string& text) {
    std::fprintf(stderr, "tav-page: %s\n", text.c_str());
    return tools::kBadSetup;
}

}  // namespace page
