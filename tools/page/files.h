// What the page's server sends that is in a file.
#pragma once

#include <optional>
#include <string>

namespace page {

// The content of the file with this path below the folder. Nothing where there is none, or where it
// is hidden, or a link leads out of the folder.
std::optional<std::string> readBelow(const std::string& folder, const std::string& path);

// The HTML document with an element of its own before its first script.
std::string withElement(const std::string& document, const std::string& element);

}  // namespace page
