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

}  // namespace bridge
