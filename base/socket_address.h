// Unix sockets.
#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace base {

// Names the socket through its open folder, because a socket's path may only be about a hundred
// bytes long, and the path of a device's root is the user's to choose.
class SocketAddress {
public:
    // An absolute path.
    explicit SocketAddress(const std::string& path) {
        const size_t name = path.rfind('/') + 1;
        m_folder = open(path.substr(0, name).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        m_address.sun_family = AF_UNIX;
        std::snprintf(m_address.sun_path, sizeof m_address.sun_path, "/proc/self/fd/%d/%s",
                      m_folder, path.c_str() + name);
    }
    ~SocketAddress() {
        if (m_folder >= 0) {
            close(m_folder);
        }
    }
    SocketAddress(const SocketAddress&) = delete;
    SocketAddress& operator=(const SocketAddress&) = delete;

    const char* path() const { return m_address.sun_path; }

    bool connectTo(int socket) const { return connect(socket, address(), sizeof m_address) == 0; }

    bool bindTo(int socket) const { return bind(socket, address(), sizeof m_address) == 0; }

private:
    const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

    int m_folder = -1;
    sockaddr_un m_address{};
};

// A connection that never waits with who listens at the absolute path; negative, with errno, on
// failure.
inline int connectTo(const std::string& path) {
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (connection >= 0 && !SocketAddress(path).connectTo(connection)) {
        const int problem = errno;
        close(connection);
        errno = problem;
        return -1;
    }
    return connection;
}

// Whether the program at the other end of the connection runs for the user of this one.
inline bool isOfThisUser(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

}  // namespace base
