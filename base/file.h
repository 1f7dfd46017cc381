// Whole files.
#ifndef TAV_BASE_FILE_H
#define TAV_BASE_FILE_H

#include <optional>
#include <string>

namespace base {

// Empty for a regular file. For what is none, one line that begins with the path.
std::string whyNoFile(const std::string& path);

// The content of a regular file of at most so many bytes, without UTF-8's byte-order mark. Nothing,
// with a line in `error` that begins with the path, for any other.
std::optional<std::string> readFile(const std::string& path, size_t mostBytes, std::string* error);

// Writes the file anew: whole, or not at all. False, with a line in `error` that begins with the
// path, when that cannot be done.
bool writeFile(const std::string& path, const std::string& content, std::string* error);

// Writes a file that is not there yet, for its owner alone. False, with nothing written anywhere,
// when there is something of that name, be it a link; and when the file cannot be written whole.
bool createFile(const std::string& path, const std::string& content);

}  // namespace base

#endif
