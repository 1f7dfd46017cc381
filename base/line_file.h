// A log file that is written from inside an application.
#pragma once

#include <string>

#include "base/descriptor.h"

namespace base {

// Each line is appended with one write, so that processes can share the file. If the program closes
// the descriptor, the file is opened again, as long as the path still refers to the same file.
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
