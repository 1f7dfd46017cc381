#include "base/line_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace base {
namespace {

constexpr int kAppending = O_WRONLY | O_APPEND | O_CLOEXEC | O_LARGEFILE;

}  // namespace

bool LineFile::open(const std::string& path) {
    constexpr mode_t kForAll = 0666;
    const int file = ::open(path.c_str(), kAppending | O_CREAT, kForAll);
    if (file < 0) {
        return false;
    }
    m_file = Descriptor(file);
    // Absolute, because the program may change its working directory before the file is opened
    // again.
    std::error_code problem;
    m_path = std::filesystem::absolute(path, problem);
    return true;
}

bool LineFile::append(std::string line) {
    if (!m_file.isOurs() && !openAgain()) {
        return false;
    }
    line += '\n';
    return writeAll(m_file.number(), line);
}

void LineFile::close() {
    m_path.clear();
    m_file.close();
}

// A path such as /dev/fd/3 may refer to one of the program's own files by now.
bool LineFile::openAgain() {
    const int number = ::open(m_path.c_str(), kAppending);
    if (number < 0) {
        return false;
    }
    Descriptor file(number);
    if (file.identity() != m_file.identity()) {
        errno = EBADF;
        return false;
    }
    m_file = std::move(file);
    return true;
}

}  // namespace base
