// The two kinds of page.
#pragma once

#include <strings.h>

#include <filesystem>
#include <string>

namespace bridge {

// Whether the page's file is a document, which the user's browser shows. Anything else is a script
// for the simulated device's own engine.
inline bool isDocument(const std::string& file) {
    const std::string extension = std::filesystem::path(file).extension();
    return strcasecmp(extension.c_str(), ".html") == 0 ||
           strcasecmp(extension.c_str(), ".htm") == 0;
}

// Empty for a script. For a document, why it is not shown in virtual time.
inline std::string whyNotInVirtualTime(const std::string& file) {
    return isDocument(file) ? file + ": a page in a browser is in real time, not in virtual time"
                            : std::string();
}

}  // namespace bridge
