#include "simulator/page/page_channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavsim {

namespace {

// Memory is taken in steps of this size as the bytes arrive, not by the length that was announced.
constexpr uint64_t kStep = uint64_t{64} * 1024;

constexpr size_t kHeaderSize = sizeof(PageMessageKind) + sizeof(uint64_t);

bool sendBytes(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

}  // namespace

PageChannel::~PageChannel() {
    close(m_socket);
}

bool PageChannel::send(PageMessageKind kind, std::string_view items) {
    const uint64_t length = items.size();
    char header[kHeaderSize];
    std::memcpy(header, &kind, sizeof kind);
    std::memcpy(header + sizeof kind, &length, sizeof length);
    return sendBytes(m_socket, {header, sizeof header}) && sendBytes(m_socket, items);
}

std::optional<PageMessage> PageChannel::receive() {
    PageMessage message;
    uint64_t length = 0;
    if (!receiveBytes(&message.kind, sizeof message.kind) ||
        !receiveBytes(&length, sizeof length)) {
        return std::nullopt;
    }
    while (length > 0) {
        const size_t size = std::min(length, kStep);
        const size_t before = message.items.size();
        message.items.resize(before + size);
        if (!receiveBytes(message.items.data() + before, size)) {
            return std::nullopt;
        }
        length -= size;
    }
    return message;
}

bool PageChannel::receiveBytes(void* bytes, size_t size) {
    char* place = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t received = recv(m_socket, place, size, 0);
        if (received < 0 && errno == EINTR) {
            continue;
        }
        if (received <= 0) {
            return false;
        }
        place += received;
        size -= static_cast<size_t>(received);
    }
    return true;
}

}  // namespace tavsim
