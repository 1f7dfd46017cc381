// Whole files.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace base {

// Empty for a regular file. For anything else, an error of one line that begins with the path.
std::string whyNoFile(const std::string& path);

// The content of a regular file of at most so many bytes, without a UTF-8 byte-order mark.
// Otherwise nothing, and a line in `error` that begins with the path.
std::optional<std::string> readFile(const std::string& path, size_t mostBytes, std::string* error);

// Replaces the file atomically. False, with a line in `error` that begins with the path, on
// failure.
bool writeFile(const std::string& path, const std::string& content, std::string* error);

// Creates a file that only its owner can access. False when the name exists already, even as a
// symbolic link: then nothing is written. False, too, when the file cannot be written whole.
bool createFile(const std::string& path, const std::string& content);

// The paths of what is in a folder; none when it cannot be read.
std::vector<std::string> entriesOf(const std::string& folder);

}  // namespace base
