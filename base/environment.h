// The environment of the process.
#pragma once

#include <cstdlib>
#include <string>

namespace base {

// The variable's value; `otherwise` when it is not set.
inline std::string environment(const char* name, const char* otherwise = "") {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

}  // namespace base
