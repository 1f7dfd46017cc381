// A file of lines that a process writes beside its own work.
#ifndef TAV_BASE_LINE_FILE_H
#define TAV_BASE_LINE_FILE_H

#include <string>

#include "base/descriptor.h"

namespace base {

// Lines are appended, each whole and at once, so that processes can share the file. A program that
// closes all descriptors does not end it, unless the file is no longer where it was.
class LineFile {
public:
    // False, with errno, when the file cannot be written.
    bool open(const std::string& path);
    bool append(std::string line);

    bool isOpen() const { return !m_path.empty(); }
    const std::string& path() const { return m_path; }
    void close();

private:
    bool openAgain();

    std::string m_path;
    Descriptor m_file;
};

}  // namespace base

#endif
