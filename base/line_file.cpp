#include "base/line_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
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
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t count = write(m_file.number(), rest.data(), rest.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        rest.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return true;
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
