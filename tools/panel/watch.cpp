#include "watch.h"

#include <utility>

#include "simulator/control/protocol.h"

using tavsim::ControlMessage;

namespace panel {
namespace {

constexpr guint kUntilStarted = 100;  // milliseconds
constexpr guint kUntilReady = 20;     // milliseconds, whether a slow browser takes more

}  // namespace

Watch::Watch(std::string root, bool waits, Events events)
    : m_root(std::move(root)),
      m_waits(waits),
      m_events(std::move(events)),
      m_device([this](const base::Message& message) { take(message); },
               [this] { end("The device is gone: its program was killed, or has crashed."); }) {
    open();
}

void Watch::open() {
    const DeviceConnection::Opened opened = m_device.open(m_root);
    if (opened == DeviceConnection::Opened::None && !m_waits) {
        m_events.ended("No device is running there.");
    } else if (opened != DeviceConnection::Opened::Yes) {
        m_retry.after(kUntilStarted, [this] { open(); });
    } else {
        m_device.send("watch");
        m_events.opened();
    }
}

void Watch::take(const base::Message& message) {
    switch (static_cast<ControlMessage>(message.kind)) {
    case ControlMessage::Output:
        m_events.lines(message.content);
        break;
    case ControlMessage::Lost:
        m_events.lost(message.content);
        break;
    case ControlMessage::Refused:
        m_device.close();
        m_events.ended("The device cannot be watched: " + message.content);
        break;
    case ControlMessage::Ended:
        m_device.close();
        end("The device has ended.");
        break;
    default:
        break;
    }
    if (m_device.isOpen() && !m_events.isReady()) {
        m_device.hold(true);
        m_retry.every(kUntilReady, [this] {
            if (m_events.isReady()) {
                m_retry.stop();
                m_device.hold(false);
            }
        });
    }
}

// How the program of a run has ended is what the run says.
void Watch::end(const std::string& how) {
    if (m_waits) {
        m_retry.after(kUntilStarted, [this] { open(); });
    } else {
        m_events.ended(how);
    }
}

}  // namespace panel
