#include "device_connection.h"

#include <cerrno>
#include <cstdint>

#include "base/socket_address.h"
#include "simulator/control/protocol.h"
#include "simulator/device/trusted_folder.h"

namespace panel {
namespace {

constexpr uint64_t kLongestAnswer = 256 << 20;

}  // namespace

DeviceConnection::Opened DeviceConnection::open(const std::string& root) {
    close();
    const int socket = base::connectTo(root + tavsim::kControlSocket);
    if (socket < 0) {
        return errno == EAGAIN ? Opened::Crowded : Opened::None;
    }
    adopt(socket, kLongestAnswer);
    return Opened::Yes;
}

void DeviceConnection::send(std::string_view line) {
    queue(static_cast<uint8_t>(tavsim::ControlMessage::Command), line);
}

}  // namespace panel
