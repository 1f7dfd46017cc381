#include "helper/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace helper {
namespace {

constexpr int kOutOfTheWay = 512;  // half of how many a process may have by default

}  // namespace

Descriptor::Descriptor(int number) : m_number(number) {
    const int high = fcntl(number, F_DUPFD_CLOEXEC, kOutOfTheWay);
    if (high >= 0) {
        ::close(number);
        m_number = high;
    }
    struct stat status;
    if (fstat(m_number, &status) == 0) {
        m_device = status.st_dev;
        m_inode = status.st_ino;
    }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        m_number = std::exchange(other.m_number, -1);
        m_device = other.m_device;
        m_inode = other.m_inode;
    }
    return *this;
}

bool Descriptor::isOurs() const {
    struct stat status;
    return m_number >= 0 && fstat(m_number, &status) == 0 && status.st_dev == m_device &&
           status.st_ino == m_inode;
}

void Descriptor::close() {
    if (isOurs()) {
        ::close(m_number);
    }
    m_number = -1;
}

}  // namespace helper
