#include "helper/line_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

namespace helper {

bool LineFile::open(const std::string& path) {
    // The program may change its folder before the file has to be opened again.
    std::error_code problem;
    m_path = std::filesystem::absolute(path, problem);
    if (openAgain()) {
        return true;
    }
    m_path.clear();
    return false;
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

bool LineFile::openAgain() {
    constexpr mode_t kForAll = 0666;
    const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kForAll);
    if (file < 0) {
        return false;
    }
    m_file = Descriptor(file);
    return true;
}

}  // namespace helper
