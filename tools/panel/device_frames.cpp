#include "device_frames.h"

#include <utility>

#include "simulator/control/protocol.h"

using tavsim::ControlMessage;

namespace panel {
namespace {

constexpr guint kBetweenTries = 500;  // milliseconds, where there is no picture

}  // namespace

DeviceFrames::DeviceFrames(std::string root, web::Frames::Sink sink)
    : m_root(std::move(root)),
      m_device([this](const base::Message& message) { take(message); },
               [this] { m_retry.after(kBetweenTries, [this] { ask(); }); }),
      m_frames({[this] { ask(); }, [this] { stop(); }}, std::move(sink)) {
}

void DeviceFrames::ask() {
    m_retry.stop();
    if (!m_device.isOpen() && m_device.open(m_root) != DeviceConnection::Opened::Yes) {
        m_retry.after(kBetweenTries, [this] { ask(); });
        return;
    }
    m_asked = Clock::now();
    m_device.send("frame");
}

// A new connection begins with the whole screen.
void DeviceFrames::stop() {
    m_retry.stop();
    m_device.close();
}

void DeviceFrames::take(const base::Message& message) {
    const auto kind = static_cast<ControlMessage>(message.kind);
    if (kind == ControlMessage::Frame) {
        m_frames.hand(message.content);
    } else if (kind == ControlMessage::Refused) {
        // Where nothing has changed, the device has waited before it said so.
        const bool hasWaited = Clock::now() - m_asked > std::chrono::milliseconds(kBetweenTries);
        m_retry.after(hasWaited ? 0 : kBetweenTries, [this] { ask(); });
    }
}

}  // namespace panel
