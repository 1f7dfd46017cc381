#include "base/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace base {
namespace {

constexpr int kOutOfTheWay = 512;  // half of how many a process may have by default

}  // namespace

std::optional<FileIdentity> identityOf(int number) {
    struct stat64 status;
    if (number < 0 || fstat64(number, &status) != 0) {  // a negative number leaves errno alone
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino};
}

Descriptor::Descriptor(int number) : m_number(number) {
    const int high = fcntl(number, F_DUPFD_CLOEXEC, kOutOfTheWay);
    if (high >= 0) {
        ::close(number);
        m_number = high;
    }
    m_identity = identityOf(m_number);
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    // If this descriptor was closed behind our back, the new one may have its number.
    if (m_number != other.m_number) {
        close();
    }
    m_number = std::exchange(other.m_number, -1);
    m_identity = other.m_identity;
    return *this;
}

bool Descriptor::isOurs() const {
    const std::optional<FileIdentity> now = identityOf(m_number);
    return now && now == m_identity;
}

void Descriptor::close() {
    if (isOurs()) {
        ::close(m_number);
    }
    m_number = -1;
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return true;
}

}  // namespace base
