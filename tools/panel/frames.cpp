#include "frames.h"

#include <algorithm>
#include <utility>

#include "compressed_frame.h"
#include "simulator/control/protocol.h"

using tavsim::ControlMessage;

namespace panel {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr guint kBetweenTries = 500;  // milliseconds, where there is no picture

// A line is slow where a raw picture takes longer than this, and seems fast where a compressed one
// of some size takes no longer than that.
constexpr milliseconds kSlow(100);
constexpr milliseconds kQuick(50);
constexpr size_t kSomeSize = 16 << 10;
constexpr size_t kNotWorthIt = 64 << 10;  // raw pictures of that size are never compressed
// From one attempt with raw pictures to the next.
constexpr seconds kShortestPause(4);
constexpr seconds kLongestPause(64);

}  // namespace

Frames::Frames(std::string root, Sink sink)
    : m_root(std::move(root)),
      m_sink(std::move(sink)),
      m_device([this](const base::Message& message) { take(message); },
               [this] { m_retry.after(kBetweenTries, [this] { ask(); }); }),
      m_pause(kShortestPause) {
}

void Frames::start() {
    m_isWanted = true;
    if (!m_isUnderWay) {
        ask();
    }
}

// A new connection begins with the whole screen.
void Frames::stop() {
    m_isWanted = false;
    m_retry.stop();
    m_device.close();
}

void Frames::shown() {
    if (!m_isUnderWay) {
        return;
    }
    m_isUnderWay = false;
    judgeLine(Clock::now() - m_sent);
    if (m_isWanted) {
        ask();
    }
}

void Frames::ask() {
    m_retry.stop();
    if (!m_device.isOpen() && m_device.open(m_root) != DeviceConnection::Opened::Yes) {
        m_retry.after(kBetweenTries, [this] { ask(); });
        return;
    }
    m_asked = Clock::now();
    m_device.send("frame");
}

void Frames::take(const base::Message& message) {
    switch (static_cast<ControlMessage>(message.kind)) {
    case ControlMessage::Frame:
        hand(message.content);
        break;
    case ControlMessage::Refused: {
        // Where nothing has changed, the device has waited before it said so.
        const bool hasWaited = Clock::now() - m_asked > milliseconds(kBetweenTries);
        m_retry.after(hasWaited ? 0 : kBetweenTries, [this] { ask(); });
        break;
    }
    default:
        break;
    }
}

void Frames::hand(const std::string& frame) {
    const bool isWorthIt = frame.size() > kNotWorthIt && Clock::now() < m_rawAgain;
    const std::string picture = isWorthIt ? compressed(frame) : std::string();
    m_isCompressed = !picture.empty();
    const std::string& sent = m_isCompressed ? picture : frame;
    m_isUnderWay = true;
    m_size = sent.size();
    m_sent = Clock::now();
    m_sink(sent);
}

void Frames::judgeLine(Clock::duration time) {
    const Clock::time_point now = Clock::now();
    const bool isKnown = m_rawAgain != Clock::time_point::max();
    if (!m_isCompressed && time > kSlow) {
        m_rawAgain = now + m_pause;
        m_pause = std::min<Clock::duration>(2 * m_pause, kLongestPause);
    } else if (!m_isCompressed && m_size > kNotWorthIt) {
        m_pause = kShortestPause;
    } else if (m_isCompressed && time > kQuick && isKnown) {
        m_rawAgain = now + m_pause;
    } else if (!isKnown && time <= kQuick && m_size >= kSomeSize) {
        m_rawAgain = now;
    }
}

}  // namespace panel
