#include "bridge/page_frames.h"

#include <chrono>

namespace bridge {
namespace {

constexpr std::chrono::seconds kLongestBlindness(5);

}  // namespace

void PageFrames::want(bool isWhole) {
    m_isWanted = true;
    if (isWhole) {
        m_changes.reset();
    }
}

std::optional<std::string> PageFrames::next() {
    if (m_isWanted) {
        if (!m_changes) {
            m_changes.emplace();
        }
        std::string nothingToSee;
        std::optional<std::string> frame = m_changes->next(&nothingToSee);
        m_isWanted = !frame;
        return frame;
    }
    if (m_changes &&
        std::chrono::steady_clock::now() - m_changes->lastAsked() > kLongestBlindness) {
        m_changes.reset();
    }
    return std::nullopt;
}

}  // namespace bridge
