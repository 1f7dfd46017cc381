// The address of a device's control socket.
#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "simulator/device/trusted_folder.h"

namespace tavsim {

// Names the socket through an open folder, because a socket's path may only be about a hundred
// bytes long, and the path of a device's root is the user's to choose.
class ControlAddress {
public:
    explicit ControlAddress(const std::string& root)
        : m_folder(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        m_address.sun_family = AF_UNIX;
        std::snprintf(m_address.sun_path, sizeof m_address.sun_path, "/proc/self/fd/%d%s", m_folder,
                      kControlSocket);
    }
    ~ControlAddress() {
        if (m_folder >= 0) {
            close(m_folder);
        }
    }
    ControlAddress(const ControlAddress&) = delete;
    ControlAddress& operator=(const ControlAddress&) = delete;

    const char* path() const { return m_address.sun_path; }

    bool connectTo(int socket) const { return connect(socket, address(), sizeof m_address) == 0; }

    bool bindTo(int socket) const { return bind(socket, address(), sizeof m_address) == 0; }

private:
    const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

    int m_folder;
    sockaddr_un m_address{};
};

// A connection to the device with this root folder that never waits; negative, with errno, on
// failure.
inline int connectToDevice(const std::string& root) {
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (connection >= 0 && !ControlAddress(root).connectTo(connection)) {
        const int problem = errno;
        close(connection);
        errno = problem;
        return -1;
    }
    return connection;
}

}  // namespace tavsim
