#include "tools/web/frames.h"

#include <algorithm>
#include <utility>

#include "tools/web/compressed_frame.h"

namespace web {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

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

Frames::Frames(Origin origin, Sink sink)
    : m_origin(std::move(origin)), m_sink(std::move(sink)), m_pause(kShortestPause) {
}

void Frames::start() {
    m_isWanted = true;
    if (!m_isUnderWay) {
        m_origin.ask();
    }
}

void Frames::stop() {
    m_isWanted = false;
    m_origin.stop();
}

void Frames::shown() {
    if (!m_isUnderWay) {
        return;
    }
    m_isUnderWay = false;
    judgeLine(Clock::now() - m_sent);
    if (m_isWanted) {
        m_origin.ask();
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

}  // namespace web
