#include "base/socket.h"

#include <sys/socket.h>

#include <cerrno>

namespace base {

bool sendNow(int socket, const std::string& bytes, size_t* sent) {
    while (*sent < bytes.size()) {
        const ssize_t count =
            send(socket, bytes.data() + *sent, bytes.size() - *sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EINTR) {
            return errno == EAGAIN;
        }
        *sent += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

Received receiveNow(int socket, size_t most, std::string* bytes) {
    const size_t before = bytes->size();
    bytes->resize(before + most);
    const ssize_t count = recv(socket, bytes->data() + before, most, MSG_DONTWAIT);
    bytes->resize(before + (count > 0 ? static_cast<size_t>(count) : 0));
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Received::NothingYet;
    }
    return count > 0 ? Received::Some : Received::End;
}

}  // namespace base
